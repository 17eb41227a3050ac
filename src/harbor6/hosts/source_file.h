#pragma once

#include "harbor6/hosts/plain_item.h"
#include "harbor6/model/single_fork_file.h"
#include "harbor6/posix/file_input.h"

namespace host {

/// The bytes of an archive's file.
class HARBOR6_API SourceFork : public harbor6::Fork {
public:
    explicit SourceFork(std::unique_ptr<file_input> bytes);
    explicit SourceFork(std::unique_ptr<::stream::input> bytes);

    file_input& storage() const { return *bytes; }

    /// The one stream, set back to its beginning. Raises stream::exception if that is impossible.
    harbor6::data::CountedInput input(bool expanding) const override;
    /// Empty on a pipe.
    harbor6::data::random::CountedInput randomInput(bool expanding, bool shared) const override;

private:
    file_input* bytes = nullptr; ///< owned by `stream`; null for another kind of stream
    harbor6::data::CountedInput stream;
};

/// The file of an archive as an item: a name, and one stream of bytes, which all users share. Each request
/// for the stream sets it back to its beginning; on a pipe that works while the stream still holds it.
class HARBOR6_API SourceFile : public harbor6::OneForkFile<SourceFork>, public PlainItem<SourceFile> {
public:
    SourceFile(harbor6::Format& plain_format, std::string name, std::unique_ptr<file_input> bytes);
    /// From any stream that keeps what Fork::input promises.
    SourceFile(harbor6::Format& plain_format, std::string name, std::unique_ptr<::stream::input> bytes);

    /// The stream, if it was given as a file_input.
    file_input& storage() const { return fork.storage(); }

    bool modifiable(const std::string& /*key*/) override { return false; }

protected:
    std::string itemName() const override;

private:
    std::string name;
};

} // namespace host
