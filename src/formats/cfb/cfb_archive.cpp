#include "formats/cfb/cfb_archive.h"

#include "harbor6/model/container.h"
#include "harbor6/model/file_splitter.h"
#include "harbor6/model/path_walk.h"
#include "harbor6/shell/client_interface.h"
#include "harbor6/shell/harbor_shell.h"

#include <limits>
#include <map>
#include <utility>

namespace harbor6::cfb {

using pattern::AcquiredPtr;

StreamItem::StreamItem(harbor6::Archive& archive, const ::format::cfb::item& stream)
    : owner(archive), name(stream.name), size(stream.size) {}

StreamItem::~StreamItem() = default;

bool StreamItem::hasInteger(const std::string& key) const {
    return idFromName(key) == key_id::uncompressedSize || Item::hasInteger(key);
}

bool StreamItem::getInteger(const std::string& key, std::int64_t& value) const {
    if (idFromName(key) != key_id::uncompressedSize)
        return Item::getInteger(key, value);
    constexpr auto greatest = std::numeric_limits<std::int64_t>::max();
    value = size > std::uint64_t{greatest} ? greatest : static_cast<std::int64_t>(size);
    return true;
}

void StreamItem::populateIndex() const {
    auto& keys = index();
    if (!keys.empty())
        return;
    NameAndTime::populateIndex();
    keys[key::uncompressedSize] = key_id::uncompressedSize;
}

StorageItem::StorageItem(harbor6::Archive& archive, std::string text)
    : owner(archive), name(std::move(text)) {}

StorageItem::~StorageItem() = default;

namespace {

/// One pass over a document. It lives for one call of Archive::addContentTo.
class content_pass {
public:
    content_pass(harbor6::Archive& scanned, stream::input& bytes, Folder& target, ContainerAdaptor* list)
        : archive(scanned), document(bytes), adaptor(list),
          folders(scanned, target, list,
                  [&scanned](const std::string& name) { return new StorageItem(scanned, name); }) {}

    void run() {
        // All items before any data, as of every format: a host may look at the items alone.
        for (std::uint32_t i = 0; i < document.items().size(); ++i)
            if (!add(i))
                return;
        attempt([&] {
            if (!document.damage().empty())
                throw format::exception(document.damage(), "format::cfb::document");
        });
        if (!archive.options.records_only)
            for (auto& each : wanted)
                attempt([&] { copy(*each.first, std::move(each.second)); });
        if (first_damage)
            std::rethrow_exception(first_damage);
    }

private:
    using item = ::format::cfb::item;

    /// Tells the client of the damage that `act` comes upon, or keeps it until the end.
    template<class Act>
    void attempt(Act act) {
        try {
            act();
        } catch (const format::exception&) {
            if (!archive.options.published_rules)
                first_damage = first_damage ? first_damage : std::current_exception();
            else if (!archive.shell().client().sourceArchiveDamaged(archive, std::current_exception()))
                throw;
        }
    }
    /// Asks for an item and makes it. False if the client refused a folder, which ends the pass.
    bool add(std::uint32_t index) {
        const auto& added = document.items()[index];
        AcquiredPtr<Folder> parent;
        if (!find_folder(added.is_storage ? index : added.parent, parent))
            return false;
        if (added.is_storage || !parent)
            return true;
        const AcquiredPtr<StreamItem> source(new StreamItem(archive, added));
        bool expand = false;
        if (!archive.shell().client().sourceFile(*source, *parent, &expand, nullptr))
            return true;
        AcquiredPtr<File> file(parent->acquireNewFileLike(*source, false));
        if (adaptor && file && added.parent == item::at_top)
            adaptor->containerAdd(*file);
        if (file)
            wanted.emplace_back(&added, std::move(file));
        return true;
    }
    /// The target's folder for a storage, made by the first call; null if the client declined it. False if
    /// that ends the pass.
    bool find_folder(std::uint32_t storage, AcquiredPtr<Folder>& folder) {
        if (const auto known = made.find(storage); known != made.end()) {
            folder = known->second;
            return true;
        }
        std::vector<std::uint32_t> way;
        for (auto at = storage; at != item::at_top; at = document.items()[at].parent)
            way.push_back(at);
        std::string path;
        for (auto at = way.rbegin(); at != way.rend(); ++at)
            path += (path.empty() ? "" : "/") + document.items()[*at].name;
        if (!folders.walk(path, folder))
            return false;
        made.emplace(storage, folder);
        return true;
    }
    void copy(const item& stream, AcquiredPtr<File> file) {
        FileSplitter output;
        output.entries.push_back({stream.size, std::move(file)});
        output.start();
        document.copy(stream, output);
        output.finish();
    }

    harbor6::Archive& archive;
    ::format::cfb::document document;
    ContainerAdaptor* adaptor;
    PathWalk folders;
    std::map<std::uint32_t, AcquiredPtr<Folder>> made; ///< by storage
    std::vector<std::pair<const item*, AcquiredPtr<File>>> wanted;
    std::exception_ptr first_damage;
};

} // namespace

Archive::~Archive() {
    try {
        close();
    } catch (...) {
    }
}

void Archive::addContentTo(Folder& target, ContainerAdaptor* adaptor) const {
    const auto storage = storageInput(0);
    content_pass(const_cast<Archive&>(*this), *storage, target, adaptor).run();
}

} // namespace harbor6::cfb
