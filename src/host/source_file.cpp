#include "host/source_file.h"

#include "host/disk_random.h"
#include "model/format.h"

namespace host {

namespace key_id = harbor6::key_id;

harbor6::data::CountedInput SourceFile::SourceFork::input(bool /*expanding*/) const {
    if (!shared->seek(0))
        throw stream::exception("the input can't be read a second time", "host::SourceFile");
    return shared;
}

harbor6::data::random::CountedInput SourceFile::SourceFork::randomInput(bool /*expanding*/,
                                                                        bool /*shared_stream*/) const {
    auto file = storage->duplicate();
    if (!file)
        return {};
    return harbor6::data::random::CountedInput(std::make_unique<disk_random_input>(std::move(file), "it"));
}

SourceFile::SourceFile(harbor6::Format& format, std::string file_name, std::unique_ptr<storage_input> input)
    : described(format), name(std::move(file_name)), bytes(input.get()) {
    fork.storage = bytes;
    fork.shared = harbor6::data::CountedInput(std::move(input));
}

void SourceFile::destroy() {
    delete this;
}

const harbor6::Format& SourceFile::format() const {
    return described;
}

harbor6::Format& SourceFile::format() {
    return described;
}

harbor6::Fork* SourceFile::getMainFork() {
    return &fork;
}

const harbor6::Fork* SourceFile::getMainFork() const {
    return &fork;
}

bool SourceFile::hasString(const std::string& key) const {
    return idFromName(key) == key_id::name || File::hasString(key);
}

bool SourceFile::getString(const std::string& key, std::string& value) const {
    if (idFromName(key) != key_id::name)
        return File::getString(key, value);
    value = name;
    return true;
}

void SourceFile::populateIndex() const {
    File::populateIndex();
    index()[harbor6::key::name] = key_id::name;
}

} // namespace host
