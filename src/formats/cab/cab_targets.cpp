#include "formats/cab/cab_targets.h"

#include "formats/cab/cab_archive.h"
#include "formats/cab/cab_items.h"
#include "harbor6/groundwork/text.h"
#include "harbor6/model/container.h"
#include "harbor6/shell/client_interface.h"
#include "harbor6/shell/harbor_shell.h"

namespace harbor6::cab {

using pattern::AcquiredPtr;

target_finder::target_finder(Archive& scanned, Folder& into, ContainerAdaptor* list)
    : archive(scanned), adaptor(list), folders(scanned, into, list, [&scanned](const std::string& name) {
          return new FolderItem(&scanned, name);
      }) {}

bool target_finder::find(const std::shared_ptr<const ::format::cab::file_header>& record,
                         std::uint16_t compression, AcquiredPtr<File>& file) {
    AcquiredPtr<Folder> parent;
    const auto stem = record->name_shortened ? std::string() : nio::stem(record->name, '/');
    if (!folders.walk(stem, parent))
        return false;
    const AcquiredPtr<FileItem> item(new FileItem(&archive, record, compression));
    file = nullptr;
    bool expand = false;
    if (parent && archive.shell().client().sourceFile(*item, *parent, &expand, nullptr)) {
        file = parent->acquireNewFileLike(*item, false);
        if (adaptor && file && stem.empty())
            adaptor->containerAdd(*file);
    }
    return true;
}

} // namespace harbor6::cab
