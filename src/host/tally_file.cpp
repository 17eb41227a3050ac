#include "host/tally_file.h"

#include "host/disk_target.h"
#include "stream/output.h"
#include "stream/segment_listener.h"

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
    return disk_target::join(*folder_path, name);
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

} // namespace host
