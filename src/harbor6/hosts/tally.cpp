#include "harbor6/hosts/tally.h"

#include "harbor6/groundwork/text.h"
#include "harbor6/posix/directory_tree.h"
#include "harbor6/stream/multi_output.h"
#include "harbor6/stream/output.h"

#include <new>

namespace host {

namespace {

/// The data of a file whose bytes go into a sink.
class counted_arrival : public arrival {
public:
    explicit counted_arrival(std::shared_ptr<tally_sink> taking) : sink(std::move(taking)) {}

    std::shared_ptr<tally_sink> sink; ///< may be null
};

class tally_output : public stream::output, public stream::segment_listener {
public:
    tally_output(tally& counts, std::shared_ptr<counted_arrival> counted)
        : shared(counts), data(std::move(counted)) {}

    using stream::output::write;

    void write(const char* buffer, unsigned length) override {
        if (data->sink)
            data->sink->write({buffer, length});
        data->set_received(data->received() + length);
        if (shared.arriving)
            shared.arriving(0, length);
    }
    void write(char byte) override { write(&byte, 1); }
    std::uint64_t tell() const override { return data->received(); }
    void segment_begins(std::uint64_t size) override { data->expect(size); }
    void segment_failed() override { data->fail({}); }

private:
    tally& shared;
    std::shared_ptr<counted_arrival> data;
};

std::string unusable_folder(const std::string& path, const std::string& reason) {
    return "cannot use folder " + nio::printable(path) + ": " + reason;
}

} // namespace

std::optional<attribute_value> value_of(const harbor6::Attributes& item, const std::string& key) {
    bool flag = false;
    std::int64_t number = 0;
    std::string text;
    any::time when;
    if (item.getBoolean(key, flag))
        return flag;
    if (item.getInteger(key, number))
        return number;
    if (item.getString(key, text))
        return text;
    if (item.getTime(key, when))
        return fs::time(when);
    return std::nullopt;
}

harbor6::data::CountedOutput TallyFork::output(bool /*expanding*/) {
    auto& shared = owner->shared;
    const auto path = owner->path();
    shared.log.begun(path);
    auto data = std::make_shared<counted_arrival>(shared.sink_for ? shared.sink_for(path) : nullptr);
    owner->data = data;
    return harbor6::data::CountedOutput(new tally_output(shared, std::move(data)));
}

TallyFile::TallyFile(tally& counts, std::shared_ptr<const std::string> folder)
    : OneForkFile(this), PlainItem(counts.plain_format), shared(counts), folder_path(std::move(folder)) {}

TallyFile::~TallyFile() {
    if (committed)
        return;
    try {
        shared.log.missing(join_path(*folder_path, name));
    } catch (const std::bad_alloc&) {
        shared.log.missing({});
    }
}

std::string TallyFile::path() const {
    return join_path(*folder_path, name);
}

void TallyFile::commitItem() {
    if (committed || !data)
        return;
    committed = true;
    const auto ended = std::static_pointer_cast<counted_arrival>(std::move(data));
    auto own_path = path();
    ended->report(shared.log, own_path);
    if (!ended->complete())
        return;
    if (ended->sink)
        ended->sink->complete();
    if (shared.counted)
        shared.counted({std::move(own_path), ended->received(),
                        attributes ? std::move(*attributes) : std::map<std::string, attribute_value>()});
}

void TallyFile::cloneAttributes(const harbor6::Attributes& source, bool withName) {
    File::cloneAttributes(source, withName);
    if (!attributes && !shared.keys.empty())
        attributes = std::make_unique<std::map<std::string, attribute_value>>();
    for (const auto& key : shared.keys)
        if (auto value = value_of(source, key))
            attributes->insert_or_assign(key, std::move(*value));
}

std::string TallyFile::itemName() const {
    return name;
}

bool TallyFile::setItemName(const std::string& given) {
    name = given;
    return true;
}

TallyFolder::TallyFolder(tally& counts, std::shared_ptr<const std::string> path)
    : PlainItem(counts.plain_format), shared(counts), folder_path(std::move(path)) {}

std::string TallyFolder::prepareFor(const std::string& name) {
    if (too_deep)
        return "its path is too long";
    if (!shared.check_names)
        return {};
    if (auto fault = name_fault(name); !fault.empty())
        return fault;
    if (!obstacle.empty())
        return obstacle;
    const auto [entry, is_new] = shared.names.insert({name, number, 0});
    if (is_new)
        return {};
    return entry->folder == 0 ? "another file of the archive has that name" : "a folder of that name exists";
}

bool TallyFolder::isCreated() {
    return true;
}

harbor6::Item* TallyFolder::acquireItemFromName(const std::string& /*name*/) {
    return nullptr;
}

harbor6::File* TallyFolder::_newFile() {
    if (shared.arriving)
        shared.arriving(1, 0);
    return new TallyFile(shared, folder_path);
}

harbor6::Folder* TallyFolder::_newFolder() {
    pattern::AcquiredPtr<TallyFolder> folder(new TallyFolder(shared, folder_path));
    folder->number = number;
    folder->obstacle = obstacle;
    folder->too_deep = too_deep;
    return folder.detach();
}

std::string TallyFolder::itemName() const {
    return nio::leaf(path(), '/');
}

bool TallyFolder::setItemName(const std::string& name) {
    too_deep = too_deep || path().size() + name.size() > longest_path;
    if (name.empty() || too_deep)
        return true;
    folder_path = std::make_shared<const std::string>(pathOf(name));
    if (!shared.check_names || !obstacle.empty())
        return true;
    if (const auto fault = name_fault(name); !fault.empty()) {
        obstacle = unusable_folder(name, fault);
        return true;
    }
    const auto [entry, is_new] = shared.names.insert({name, number, shared.folders + 1});
    if (is_new)
        ++shared.folders;
    number = entry->folder;
    if (number == 0)
        obstacle = unusable_folder(path(), "it is not a folder");
    return true;
}

} // namespace host
