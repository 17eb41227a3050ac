#include "formats/cab/cab_archive.h"

#include "formats/cab/cab_blocks.h"
#include "formats/cab/cab_item_reader.h"
#include "formats/cab/cab_published_scan.h"

#include <iterator>

namespace harbor6::cab {

namespace {

/// The blocks of a cabinet folder as long as one of its files needs them; without `output` all blocks.
class needed_blocks : public ::format::cab::sequential_blocks {
public:
    needed_blocks(stream::input& source, const ::format::cab::folder_header& folder,
                  const block_output* output)
        : sequential_blocks(source, folder), files(output) {}

    bool next() override { return (!files || files->wantsMore()) && sequential_blocks::next(); }

private:
    const block_output* files;
};

} // namespace

Archive::Archive(const harbor6::Format& format, Item& storing_item, unsigned mode)
    : SuperArchive(format, storing_item, mode) {}

Archive::~Archive() {
    try {
        _close();
    } catch (...) {
    }
}

void Archive::addContentTo(Folder& target, ContainerAdaptor* adaptor) const {
    auto& self = const_cast<Archive&>(*this);
    if (options.published_rules) {
        PublishedScan(self, target, adaptor).run();
        return;
    }
    const auto storage = storageInput(0);
    content_scan(self, *storage, target, adaptor).run();
}

content_scan::content_scan(Archive& scanned, stream::input& bytes, Folder& into, ContainerAdaptor* list)
    : archive(scanned), input(bytes), targets(scanned, into, list), texts{scanned.options.longest_path} {}

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
    pattern::AcquiredPtr<File> file;
    if (!targets.find(record, cabinet_folders[record->folder_index].header->compression, file))
        return false;
    cabinet_folders[record->folder_index].output->entries.push_back({record->size, std::move(file)});
    return true;
}

void content_scan::expandFolders() {
    const bool selective = archive.options.wanted_only;
    auto end = cabinet_folders.end();
    while (selective && end != cabinet_folders.begin() && !std::prev(end)->output->wantsMore())
        --end;
    ::format::cab::item_reader reader;
    for (auto entry = cabinet_folders.begin(); entry != end; ++entry) {
        needed_blocks blocks(input, *entry->header, selective ? entry->output.get() : nullptr);
        if (!selective || entry->output->wantsMore()) {
            entry->output->start();
            reader.folder = entry->header.get();
            reader.expand(blocks, *entry->output);
            entry->output->endStream();
        }
        if (selective && std::next(entry) != end)
            blocks.skipRest();
    }
}

} // namespace harbor6::cab
