#pragma once

#include "harbor6/groundwork/time.h"
#include "harbor6/model/archive.h"
#include "harbor6/model/format.h"
#include "harbor6/model/path_walk.h"

#include <functional>
#include <optional>
#include <string>

namespace harbor6 {

/// What an archive's record says of one file.
struct ContentEntry {
    std::string path;                  ///< '/' between names; as the archive has it, it need not be safe
    std::optional<std::uint64_t> size; ///< in bytes; empty if it is known only at the end of the data
    std::optional<fs::time> modified;  ///< of the last change; empty if the archive doesn't say
};

/// The protocol of Archive::addContentTo for formats whose files follow one another, each record in front of
/// its data: asks the client about each file, has the target make it and its folders, tells the size, passes
/// the data on, and commits the file. A format makes one in addContentTo and calls `add` for each record. It
/// lives for one pass and owns none of its arguments; one thread. What the client, the target and the data
/// raise passes through, after the file at hand was committed as damaged, with the bytes that it has.
class HARBOR6_API ContentPass {
public:
    /// The arguments of addContentTo, on whose archive it works.
    ContentPass(const Archive& archive, Folder& target, ContainerAdaptor* added);
    ContentPass(const ContentPass&) = delete;
    ContentPass& operator=(const ContentPass&) = delete;
    ~ContentPass();

    /// Whether the client ended the pass. The format should stop; further calls of `add` do nothing.
    bool ended() const { return over; }
    /// Offers a file. If it is wanted, `deliver` is called to write its data. Returns whether it was; false
    /// too if only the records are wanted.
    bool add(const ContentEntry& entry, const std::function<void(stream::output&)>& deliver);
    /// Offers a file whose data are the next bytes of `data`, as many as `entry.size`, or without a size all
    /// that remain. They are passed over if the file isn't wanted. Raises stream::cut_short if there are
    /// fewer.
    bool add(const ContentEntry& entry, stream::input& data);

private:
    Archive& archive;
    ContainerAdaptor* added;
    PathWalk folders;
    bool over = false;
};

/// A recogniser of formats that begin with fixed bytes.
class HARBOR6_API SignatureClassifier : public format::classifier {
public:
    /// `signature` is not copied.
    explicit SignatureClassifier(std::string_view signature);
    ~SignatureClassifier() override;

    unsigned matches_at(unsigned offset) const override;
    bool confirm_at(unsigned offset) override;
    std::string_view leading_bytes() const override;

private:
    std::string_view bytes;
};

} // namespace harbor6
