#include "archive/cab/content_scan.h"

#include "archive/cab/archive.h"
#include "archive/cab/file_item.h"
#include "archive/cab/folder_item.h"
#include "archive/cab/split_path.h"
#include "format/cab/item_reader.h"
#include "model/container_adaptor.h"
#include "outside/groundwork/text.h"
#include "outside/shell/client_interface.h"
#include "outside/shell/harbor_shell.h"

namespace harbor6::cab {

using pattern::AcquiredPtr;

content_scan::content_scan(Archive& scanned, stream::input& bytes, Folder& into, ContainerAdaptor* list)
    : archive(scanned), input(bytes), target(into), adaptor(list) {}

ClientInterface& content_scan::client() const {
    return archive.shell().client();
}

void content_scan::run() {
    header.read(input, true);
    if (header.has_next)
        throw un::implemented("expansion of segmented CAB archives not supported");
    readFolders();
    for (std::uint32_t i = 0; i < header.file_count; ++i)
        if (!readFile())
            return;
    expandFolders();
}

void content_scan::readFolders() {
    for (std::uint32_t i = 0; i < header.folder_count; ++i) {
        auto& entry = cabinet_folders.emplace_back();
        entry.header = std::make_unique<::format::cab::folder_header>();
        entry.output = std::make_unique<block_output>();
        if (header.has_reserve)
            entry.header->reserve = &header.reserve.value;
        entry.header->read(input, true);
    }
}

bool content_scan::readFile() {
    const auto record = std::make_shared<::format::cab::file_header>();
    record->read(input, true);
    if (record->folder_index >= cabinet_folders.size())
        throw format::exception("invalid folder_index in file_header", "harbor6::cab::Archive::addContentTo");
    auto parent = AcquiredPtr<Folder>::sharing(target);
    const auto stem = nio::stem(record->name, '/');
    if (!stem.empty() && !walkFolders(stem, parent))
        return false;
    const AcquiredPtr<FileItem> item(new FileItem(&archive, record));
    AcquiredPtr<File> file;
    bool expand = false;
    if (parent && client().sourceFile(*item, *parent, &expand, nullptr)) {
        file = parent->acquireNewFileLike(*item, false);
        if (adaptor && file && stem.empty())
            adaptor->containerAdd(*file);
    }
    cabinet_folders[record->folder_index].output->entries.push_back({record->size, std::move(file)});
    return true;
}

bool content_scan::walkFolders(const std::string& stem, AcquiredPtr<Folder>& parent) {
    bool first = true;
    for (const std::string token : split_path(stem, '/')) {
        AcquiredPtr<Folder> folder;
        if (!first)
            folder = parent->acquireNewFolderFromName(token, false);
        else if (!topFolder(token, parent, folder))
            return true;
        first = false;
        if (!folder->isCreated()) {
            if (!client().targetFolder(*folder, *parent, nullptr))
                return false;
            folder->commitItem();
        }
        parent = std::move(folder);
    }
    return true;
}

bool content_scan::topFolder(const std::string& token, AcquiredPtr<Folder>& parent,
                             AcquiredPtr<Folder>& folder) {
    if (const auto known = folders.find(token); known != folders.end()) {
        folder = known->second;
        return true;
    }
    std::string name = token;
    const AcquiredPtr<FolderItem> model(new FolderItem(&archive, token));
    if (!Folder::settleFolderName(archive, *model, name, parent, folder))
        return false;
    if (!folder)
        folder = parent->acquireNewFolderFromName(name, false);
    folders.emplace(token, folder);
    if (adaptor)
        adaptor->containerAdd(*folder);
    return true;
}

void content_scan::expandFolders() {
    for (auto& entry : cabinet_folders) {
        entry.output->start();
        ::format::cab::item_reader(entry.header.get()).process(input, *entry.output);
    }
}

} // namespace harbor6::cab
