#include <harbor6/harbor6.h>
#include <harbor6/model/container.h>
#include <harbor6/model/named_item.h>
#include <harbor6/model/single_fork_file.h>

// A plug-in whose archives give items: "ITEM", then for each of them the length of its name in one byte, the
// name, the length of its content in one byte, and the content, which for a name that ends in '/' is a list
// of such items. Content "damaged" can't be read.

namespace {

struct Bytes : harbor6::Fork {
    explicit Bytes(std::string content) : bytes(std::move(content)) {}
    harbor6::data::CountedInput input(bool /*expanding*/) const override {
        if (bytes == "damaged")
            throw format::exception("this file is damaged", "item_plug_in");
        return harbor6::data::CountedInput(new stream::memory_input(bytes));
    }
    std::string bytes;
};

class EntryFile : public harbor6::ArchiveItem,
                  public harbor6::OneForkFile<Bytes>,
                  public harbor6::NamedItem<EntryFile> {
public:
    EntryFile(harbor6::Archive& archive, std::string called, std::string content)
        : OneForkFile(std::move(content)), owner(archive), name(std::move(called)) {}

    harbor6::Archive* owningArchive() const override { return &owner; }
    bool hasInteger(const std::string& key) const override {
        return key == harbor6::key::uncompressedSize || Item::hasInteger(key);
    }
    bool getInteger(const std::string& key, std::int64_t& value) const override {
        if (key != harbor6::key::uncompressedSize)
            return Item::getInteger(key, value);
        value = static_cast<std::int64_t>(fork.bytes.size());
        return true;
    }

protected:
    std::string itemName() const override { return name; }

private:
    harbor6::Archive& owner;
    const std::string name;
};

void read(std::string_view bytes, harbor6::Archive& archive, harbor6::ContainerAdaptor& into);

class EntryFolder : public harbor6::ArchiveItem,
                    public harbor6::Folder,
                    public harbor6::NamedItem<EntryFolder> {
public:
    EntryFolder(harbor6::Archive& archive, std::string called, std::string_view content)
        : owner(archive), name(std::move(called)) {
        read(content, archive, *items);
    }

    harbor6::Archive* owningArchive() const override { return &owner; }
    std::unique_ptr<pattern::Iterator<harbor6::Item*>> createIterator() override {
        return items->createIterator();
    }
    std::unique_ptr<pattern::Iterator<const harbor6::Item*>> createIterator() const override {
        return std::as_const(*items).createIterator();
    }

protected:
    std::string itemName() const override { return name; }

private:
    harbor6::Archive& owner;
    const std::string name;
    const pattern::AcquiredPtr<harbor6::StdVectorContainer> items{new harbor6::StdVectorContainer};
};

void read(std::string_view bytes, harbor6::Archive& archive, harbor6::ContainerAdaptor& into) {
    const auto next = [&bytes] {
        if (bytes.empty() || bytes.size() <= static_cast<unsigned char>(bytes[0]))
            throw format::exception("a record is cut short", "item_plug_in");
        std::string text(bytes.substr(1, static_cast<unsigned char>(bytes[0])));
        bytes.remove_prefix(1 + text.size());
        return text;
    };
    while (!bytes.empty()) {
        auto name = next();
        auto content = next();
        pattern::AcquiredPtr<harbor6::Item> item;
        if (name.ends_with('/'))
            item = new EntryFolder(archive, name.substr(0, name.size() - 1), content);
        else
            item = new EntryFile(archive, std::move(name), std::move(content));
        into.containerAdd(*item);
    }
}

class ItemArchive : public harbor6::SuperArchive {
public:
    using SuperArchive::SuperArchive;

    std::unique_ptr<pattern::Iterator<harbor6::Item*>> createIterator() override {
        return items->createIterator();
    }
    std::unique_ptr<pattern::Iterator<const harbor6::Item*>> createIterator() const override {
        return std::as_const(*items).createIterator();
    }

protected:
    void _open(Mode /*mode*/) override {
        const auto stored = storageInput(0);
        stored->skip(4);
        std::string bytes(static_cast<std::size_t>(stored->size()) - 4, '\0');
        stored->read(bytes.data(), static_cast<unsigned>(bytes.size()));
        read(bytes, *this, *items);
    }

private:
    const pattern::AcquiredPtr<harbor6::StdVectorContainer> items{new harbor6::StdVectorContainer};
};

class ItemFormat : public harbor6::SuperFormat {
public:
    explicit ItemFormat(harbor6::HarborShell* host) : SuperFormat(host) {
        format_name = "item";
        long_name = "Items";
        suffixes.push_back(".item");
        is_folder = true;
        capabilities = expands_archives;
    }

    harbor6::Archive* _newArchiveAtItem(harbor6::File* file, unsigned mode) override {
        return new ItemArchive(*this, *file, mode);
    }
    format::classifier* _newClassifier() override { return new harbor6::SignatureClassifier("ITEM"); }
};

} // namespace

bool loadFormats(harbor6::Classifier& classifier, harbor6::HarborShell* shell) {
    return classifier.addFormat(*new ItemFormat(shell));
}
