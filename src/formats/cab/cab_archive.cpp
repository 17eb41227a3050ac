#include "formats/cab/cab_archive.h"

#include "formats/cab/cab_item_reader.h"
#include "formats/cab/cab_items.h"
#include "harbor6/groundwork/text.h"
#include "harbor6/model/container.h"
#include "harbor6/shell/client_interface.h"
#include "harbor6/shell/harbor_shell.h"

namespace harbor6::cab {

using pattern::AcquiredPtr;

Archive::Archive(const harbor6::Format& format, Item& storing_item, unsigned mode)
    : SuperArchive(format, storing_item, mode) {}

Archive::~Archive() {
    try {
        _close();
    } catch (...) {
    }
}

void Archive::addContentTo(Folder& target, ContainerAdaptor* adaptor) const {
    const auto storage = storageInput(0);
    content_scan(const_cast<Archive&>(*this), *storage, target, adaptor).run();
}

content_scan::content_scan(Archive& scanned, stream::input& bytes, Folder& into, ContainerAdaptor* list)
    : archive(scanned), input(bytes), adaptor(list),
      target_folders(scanned, into, list,
                     [&scanned](const std::string& name) { return new FolderItem(&scanned, name); }),
      texts{scanned.options.longest_path, scanned.options.published_rules} {}

void content_scan::run() {
    header.texts = texts;
    header.read(input, true);
    if (header.has_next)
        throw un::implemented("expansion of segmented CAB archives not supported");
    readFolders();
    for (std::uint32_t i = 0; i < header.file_count; ++i)
        if (!addFile())
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

bool content_scan::addFile() {
    const auto record = std::make_shared<::format::cab::file_header>();
    record->texts = texts;
    record->read(input, true);
    if (record->folder_index >= cabinet_folders.size())
        throw format::exception("invalid folder_index in file_header", "harbor6::cab::Archive::addContentTo");
    AcquiredPtr<Folder> parent;
    const auto stem = record->name_shortened ? std::string() : nio::stem(record->name, '/');
    if (!target_folders.walk(stem, parent))
        return false;
    const AcquiredPtr<FileItem> item(new FileItem(&archive, record));
    AcquiredPtr<File> file;
    bool expand = false;
    if (parent && archive.shell().client().sourceFile(*item, *parent, &expand, nullptr)) {
        file = parent->acquireNewFileLike(*item, false);
        if (adaptor && file && stem.empty())
            adaptor->containerAdd(*file);
    }
    cabinet_folders[record->folder_index].output->entries.push_back({record->size, std::move(file)});
    return true;
}

void content_scan::expandFolders() {
    for (auto& entry : cabinet_folders) {
        entry.output->start();
        ::format::cab::item_reader(entry.header.get()).process(input, *entry.output);
        entry.output->endStream();
    }
}

} // namespace harbor6::cab
