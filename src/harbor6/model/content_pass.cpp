#include "harbor6/model/content_pass.h"

#include "harbor6/groundwork/text.h"
#include "harbor6/model/named_item.h"
#include "harbor6/model/single_fork_file.h"
#include "harbor6/shell/client_interface.h"
#include "harbor6/shell/harbor_shell.h"
#include "harbor6/stream/multi_output.h"

namespace harbor6 {

namespace {

using pattern::AcquiredPtr;

/// A record as the client and the target see it.
class RecordItem : public ArchiveItem, public SingleForkFile, public NamedItem<RecordItem> {
public:
    RecordItem(Archive& archive, const ContentEntry& described, std::string file_name)
        : owner(archive), entry(described), name(std::move(file_name)) {}

    Archive* owningArchive() const override { return &owner; }
    bool modifiable(const std::string& /*key*/) override { return false; }
    bool hasString(const std::string& key) const override {
        return key == key::pathName || NamedItem::hasString(key);
    }
    bool getString(const std::string& key, std::string& value) const override {
        if (key != key::pathName)
            return NamedItem::getString(key, value);
        value = entry.path;
        return true;
    }
    bool hasInteger(const std::string& key) const override {
        return (key == key::uncompressedSize && entry.size) || Item::hasInteger(key);
    }
    bool getInteger(const std::string& key, std::int64_t& value) const override {
        if (key != key::uncompressedSize || !entry.size)
            return Item::getInteger(key, value);
        value = static_cast<std::int64_t>(*entry.size);
        return true;
    }

protected:
    std::string itemName() const override { return name; }
    std::optional<any::time> itemTime() const override { return entry.modified; }

private:
    Archive& owner;
    const ContentEntry& entry;
    const std::string name;
};

/// A folder in the path of a record.
class PathItem : public ArchiveItem, public Folder, public NamedItem<PathItem> {
public:
    PathItem(Archive& archive, std::string component) : owner(archive), name(std::move(component)) {}

    Archive* owningArchive() const override { return &owner; }
    bool modifiable(const std::string& /*key*/) override { return false; }

protected:
    std::string itemName() const override { return name; }

private:
    Archive& owner;
    const std::string name;
};

/// Closes and commits a file, which is damaged if that isn't asked for.
class OpenFile {
public:
    OpenFile(File& made, const ContentEntry& entry) : file(made) {
        if (Fork* const fork = file.getMainFork())
            output = fork->output(true);
        if (auto* const told = entry.size ? listener() : nullptr)
            told->segment_begins(*entry.size);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() {
        if (committed)
            return;
        try {
            if (auto* const told = listener())
                told->segment_failed();
            commit();
        } catch (...) {
            // Another failure ends the pass.
        }
    }

    void commit() {
        output.reset();
        committed = true;
        file.commitItem();
    }

    data::CountedOutput output;

private:
    stream::segment_listener* listener() { return dynamic_cast<stream::segment_listener*>(output.get()); }

    File& file;
    bool committed = false;
};

} // namespace

ContentPass::ContentPass(const Archive& scanned, Folder& target, ContainerAdaptor* list)
    : archive(const_cast<Archive&>(scanned)), added(list),
      folders(archive, target, list,
              [this](const std::string& name) { return new PathItem(archive, name); }) {}

ContentPass::~ContentPass() = default;

bool ContentPass::add(const ContentEntry& entry, const std::function<void(stream::output&)>& deliver) {
    if (over)
        return false;
    AcquiredPtr<Folder> parent;
    const auto longest = archive.options.longest_path;
    const bool too_long = entry.path.size() > longest;
    const auto stem = too_long ? std::string() : nio::stem(entry.path, '/');
    const auto name =
        too_long ? entry.path.substr(0, static_cast<std::size_t>(longest)) : nio::leaf(entry.path, '/');
    over = !folders.walk(stem, parent);
    if (over || !parent)
        return false;
    const AcquiredPtr<RecordItem> item(new RecordItem(archive, entry, name));
    bool expand = false;
    if (!archive.shell().client().sourceFile(*item, *parent, &expand, nullptr))
        return false;
    const AcquiredPtr<File> file(parent->acquireNewFileLike(*item, false));
    if (!file)
        return false;
    if (added && stem.empty())
        added->containerAdd(*file);
    if (archive.options.records_only)
        return false;
    OpenFile open(*file, entry);
    deliver(*open.output);
    open.commit();
    return true;
}

bool ContentPass::add(const ContentEntry& entry, stream::input& data) {
    const auto all = ~std::uint64_t{0};
    const auto length = entry.size.value_or(all);
    std::uint64_t moved = 0;
    const bool wanted =
        add(entry, [&](stream::output& output) { moved = nio::copy(data, output, length, 65536); });
    if (!wanted && !over)
        moved = data.skip(length);
    if (!over && length != all && moved < length)
        throw stream::cut_short(data.tell(), "harbor6::ContentPass");
    return wanted;
}

SignatureClassifier::SignatureClassifier(std::string_view signature) : classifier(0, 0), bytes(signature) {}

SignatureClassifier::~SignatureClassifier() = default;

unsigned SignatureClassifier::matches_at(unsigned offset) const {
    const std::string_view all(sample.begin(), sample.length());
    return offset <= all.size() && all.substr(offset).starts_with(bytes) ? 1 : 0;
}

bool SignatureClassifier::confirm_at(unsigned offset) {
    return matches_at(offset) != 0;
}

std::string_view SignatureClassifier::leading_bytes() const {
    return bytes;
}

} // namespace harbor6
