#pragma once

#include "harbor6/groundwork/export.h"
#include "harbor6/stream/array_input.h"

#include <memory>
#include <vector>

namespace harbor6 {

class Archive;
class File;
class Format;

/// The registry of formats. It owns every format that was added, for as long as it lives, and recognises
/// files by the first 64 KiB of their main fork.
class HARBOR6_API Classifier {
public:
    Classifier();
    Classifier(const Classifier&) = delete;
    Classifier& operator=(const Classifier&) = delete;
    virtual ~Classifier();

    static constexpr unsigned sample_size = 65536;

    /// Takes `format` over, and always accepts it.
    virtual bool addFormat(Format& format) const;
    /// An unopened archive on `file` with a reference for the caller, null if no format claims the file. A
    /// file without a main fork that can be read is claimed by none.
    virtual Archive* acquireStreamArchive(File& file);
    virtual Archive* acquireFileArchive(File& file, std::uint32_t a, std::uint32_t b, std::uint32_t c);

    /// The format whose archive starts at the first byte of `sample`, null if there is none.
    Format* recognise(const un::array<char>& sample) const;
    /// The format as whose archive the sample begins, although recognise doesn't take it; null if there is
    /// none. Raises stream::exception where the sample ends inside the header.
    Format* resembling(const un::array<char>& sample) const;
    const std::vector<std::unique_ptr<Format>>& formats() const;

private:
    mutable std::vector<std::unique_ptr<Format>> known;
};

} // namespace harbor6
