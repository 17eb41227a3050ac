#pragma once

#include "harbor6/groundwork/export.h"
#include "harbor6/stream/array_input.h"

#include <memory>
#include <vector>

namespace harbor6 {

class Archive;
class File;
class Format;

/// The registry of formats, which it owns. It recognises archives by the first bytes of a file's main fork.
/// Used by one thread at a time.
class HARBOR6_API Classifier {
public:
    Classifier();
    Classifier(const Classifier&) = delete;
    Classifier& operator=(const Classifier&) = delete;
    virtual ~Classifier();

    static constexpr unsigned sample_size = 65536; ///< bytes that are looked at

    /// Takes ownership of `format`, made with new. Returns whether it was accepted, here always true.
    /// Const because plug-ins get a constant registry to add to.
    virtual bool addFormat(Format& format) const;
    /// An unopened archive on `file`, counted for the caller; null if no format recognises it or its main
    /// fork can't be read. The first format to recognise it is used. What reading raises passes through.
    virtual Archive* acquireStreamArchive(File& file);
    /// The same for a file that is a volume of an archive and continues it from another file. It is expanded
    /// by hosts alone that set Archive::volumes and the option `published_rules`.
    Archive* acquireContinuedArchive(File& file);
    /// As acquireStreamArchive; a host's class may use the other arguments.
    virtual Archive* acquireFileArchive(File& file, std::uint32_t a, std::uint32_t b, std::uint32_t c);

    /// The format of the archive that starts at the first byte of `sample`; null if none recognises it.
    Format* recognise(const un::array<char>& sample) const;
    /// The format whose signature starts the sample, even if its header isn't valid; null if there is none.
    /// Raises what reading the header raises: stream::exception if the sample ends inside it.
    Format* resembling(const un::array<char>& sample) const;
    /// The formats in the order of addFormat. Not to be kept across another addFormat.
    const std::vector<std::unique_ptr<Format>>& formats() const;

private:
    mutable std::vector<std::unique_ptr<Format>> registered; ///< in the order of addFormat
};

} // namespace harbor6
