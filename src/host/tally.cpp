#include "host/tally.h"

#include "host/segment_watch.h"
#include "stream/output.h"
#include "stream/segment_listener.h"

namespace host {

namespace key = harbor6::key;
namespace key_id = harbor6::key_id;

namespace {

class tally_output : public stream::output, public stream::segment_listener {
public:
    explicit tally_output(std::shared_ptr<segment_watch> counter) : watch(std::move(counter)) {}

    using stream::output::write;

    void write(const char* /*buffer*/, unsigned length) override { watch->add(length); }
    void write(char /*byte*/) override { watch->add(1); }
    std::uint64_t tell() const override { return watch->counted(); }
    void segment_begins(std::uint64_t size) override { watch->expect(size); }

private:
    std::shared_ptr<segment_watch> watch;
};

std::string join(const std::string& folder, const std::string& name) {
    return folder.empty() ? name : folder + '/' + name;
}

} // namespace

TallyFolder::TallyFolder(tally& counts, std::shared_ptr<const std::string> path)
    : shared(counts), folder_path(std::move(path)) {}

std::string TallyFolder::refusal(const std::string& /*name*/) {
    return too_deep ? "its path is too long" : std::string();
}

void TallyFolder::destroy() {
    delete this;
}

const harbor6::Format& TallyFolder::format() const {
    return shared.format;
}

harbor6::Format& TallyFolder::format() {
    return shared.format;
}

bool TallyFolder::isCreated() {
    return true;
}

harbor6::Item* TallyFolder::acquireItemFromName(const std::string& /*name*/) {
    return nullptr;
}

harbor6::File* TallyFolder::_newFile() {
    return new TallyFile(shared, folder_path);
}

harbor6::Folder* TallyFolder::_newFolder() {
    pattern::AcquiredPtr<TallyFolder> folder(new TallyFolder(shared, folder_path));
    folder->too_deep = too_deep;
    return folder.detach();
}

bool TallyFolder::setString(const std::string& key, const std::string& value) {
    if (idFromName(key) != key_id::name)
        return Folder::setString(key, value);
    too_deep = too_deep || path().size() + value.size() > longest_path;
    if (!value.empty() && !too_deep)
        folder_path = std::make_shared<const std::string>(join(path(), value));
    return true;
}

void TallyFolder::populateIndex() const {
    index()[key::name] = key_id::name;
}

harbor6::Attributes::Index* TallyFolder::newIndex() const {
    static Index names;
    return &names;
}

TallyFile::TallyFile(tally& counts, std::shared_ptr<const std::string> folder)
    : shared(counts), folder_path(std::move(folder)) {}

TallyFile::~TallyFile() {
    if (!committed)
        shared.log.missing(path());
}

std::string TallyFile::path() const {
    return join(*folder_path, name);
}

void TallyFile::destroy() {
    delete this;
}

const harbor6::Format& TallyFile::format() const {
    return shared.format;
}

harbor6::Format& TallyFile::format() {
    return shared.format;
}

harbor6::data::CountedOutput TallyFile::TallyFork::output(bool /*expanding*/) {
    watch = std::make_shared<segment_watch>();
    return harbor6::data::CountedOutput(std::make_unique<tally_output>(watch));
}

void TallyFile::commitItem() {
    if (committed || !fork.watch)
        return;
    committed = true;
    const auto size = fork.watch->counted();
    if (!fork.watch->whole()) {
        shared.log.unfinished(path(), size, {});
        return;
    }
    shared.log.done(path(), size);
    if (shared.entries)
        shared.entries->push_back({path(), size, modified});
}

harbor6::Fork* TallyFile::getMainFork() {
    return &fork;
}

bool TallyFile::setString(const std::string& key, const std::string& value) {
    if (idFromName(key) != key_id::name)
        return File::setString(key, value);
    name = value;
    return true;
}

bool TallyFile::setTime(const std::string& key, const any::time& value) {
    if (idFromName(key) != key_id::modTime)
        return File::setTime(key, value);
    modified = fs::time(value);
    return true;
}

void TallyFile::populateIndex() const {
    index()[key::name] = key_id::name;
    index()[key::modTime] = key_id::modTime;
}

harbor6::Attributes::Index* TallyFile::newIndex() const {
    static Index names;
    return &names;
}

} // namespace host
