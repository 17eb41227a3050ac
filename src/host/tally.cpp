#include "host/tally.h"

#include "harbor6/groundwork/text.h"
#include "harbor6/stream/multi_output.h"
#include "harbor6/stream/output.h"
#include "host/platform/directory_tree.h"

namespace host {

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

} // namespace

harbor6::data::CountedOutput TallyFork::output(bool /*expanding*/) {
    watch = std::make_shared<segment_watch>();
    return harbor6::data::CountedOutput(std::make_unique<tally_output>(watch));
}

TallyFile::TallyFile(tally& counts, std::shared_ptr<const std::string> folder)
    : PlainItem(counts.format), shared(counts), folder_path(std::move(folder)) {}

TallyFile::~TallyFile() {
    if (!committed)
        shared.log.missing(path());
}

std::string TallyFile::path() const {
    return directory_tree::join(*folder_path, name);
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

std::string TallyFile::itemName() const {
    return name;
}

bool TallyFile::setItemName(const std::string& given) {
    name = given;
    return true;
}

bool TallyFile::setItemTime(const any::time& time) {
    modified = fs::time(time);
    return true;
}

TallyFolder::TallyFolder(tally& counts, std::shared_ptr<const std::string> path)
    : PlainItem(counts.format), shared(counts), folder_path(std::move(path)) {}

std::string TallyFolder::refusal(const std::string& /*name*/) {
    return too_deep ? "its path is too long" : std::string();
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

std::string TallyFolder::itemName() const {
    return nio::leaf(path(), '/');
}

bool TallyFolder::setItemName(const std::string& name) {
    too_deep = too_deep || path().size() + name.size() > longest_path;
    if (!name.empty() && !too_deep)
        folder_path = std::make_shared<const std::string>(directory_tree::join(path(), name));
    return true;
}

} // namespace host
