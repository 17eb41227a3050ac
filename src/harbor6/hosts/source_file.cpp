#include "harbor6/hosts/source_file.h"

#include "harbor6/posix/random_file.h"

namespace host {

SourceFork::SourceFork(std::unique_ptr<file_input> input) : bytes(input.get()), stream(std::move(input)) {}

SourceFork::SourceFork(std::unique_ptr<::stream::input> input) : stream(std::move(input)) {}

harbor6::data::CountedInput SourceFork::input(bool /*expanding*/) const {
    if (!stream->seek(0))
        throw ::stream::exception("the input can't be read again from its beginning", "host::SourceFile");
    return stream;
}

harbor6::data::random::CountedInput SourceFork::randomInput(bool /*expanding*/, bool /*shared*/) const {
    auto file = bytes ? bytes->duplicate() : file_descriptor();
    if (!file)
        return {};
    return harbor6::data::random::CountedInput(
        std::make_unique<random_file_input>(std::move(file), "the archive"));
}

SourceFile::SourceFile(harbor6::Format& plain_format, std::string file_name,
                       std::unique_ptr<file_input> input)
    : OneForkFile(std::move(input)), PlainItem(plain_format), name(std::move(file_name)) {}

SourceFile::SourceFile(harbor6::Format& plain_format, std::string file_name,
                       std::unique_ptr<::stream::input> input)
    : OneForkFile(std::move(input)), PlainItem(plain_format), name(std::move(file_name)) {}

std::string SourceFile::itemName() const {
    return name;
}

} // namespace host
