#include "formats/cab/cab_volume.h"

#include "formats/cab/cab_published_rules.h"
#include "harbor6/groundwork/exception.h"

#include <algorithm>
#include <utility>

namespace harbor6::cab {

namespace published = ::format::cab::published;

Volume::Volume(std::string given_name, data::CountedInput bytes, const ::format::cab::text_rules& texts)
    : name(std::move(given_name)), input(std::move(bytes)), start(input->tell()) {
    header.texts = texts;
    header.read(*input, true);
}

/// Of the cabinet: as stated, or as it is if that is known to be more.
std::uint64_t Volume::size() const {
    const auto known = input->size();
    return known == ~std::uint64_t{0} ? header.cabinet_size : std::max(header.cabinet_size, known - start);
}

bool Volume::makesSense(std::uint64_t offset) const {
    return published::is_place(offset, head, size());
}

bool Volume::hasPlace(std::size_t folder) const {
    return folders[folder].block_count == 0 || makesSense(folders[folder].data_offset);
}

Volume::Complaint Volume::readFolders() {
    folders.resize(header.folder_count);
    for (auto& folder : folders) {
        if (header.has_reserve)
            folder.reserve = &header.reserve.value;
        folder.read(*input, true);
    }
    head = input->tell() - start;
    if (header.file_count != 0 && !makesSense(header.files_offset))
        return named("the stated place of the file records makes no sense; they are read behind the folder "
                     "records");
    if (header.file_count != 0)
        goTo(start + header.files_offset);
    std::vector<std::uint64_t> places;
    for (const auto& folder : folders)
        if (folder.block_count != 0 && makesSense(folder.data_offset))
            places.push_back(folder.data_offset);
    std::sort(places.begin(), places.end());
    if (std::adjacent_find(places.begin(), places.end()) == places.end())
        return std::nullopt;
    return named("two folders state the same place for their data; the files of one may be wrong");
}

void Volume::goTo(std::uint64_t place) {
    const auto here = input->tell();
    if (place == here || input->seek(place))
        return;
    if (place < here)
        throw stream::exception("the archive must be read backwards, which its input doesn't allow",
                                "harbor6::cab::Archive");
    if (const auto known = input->size(); known != ~std::uint64_t{0} && place > known)
        throw stream::cut_short(known, "harbor6::cab::Archive");
    if (input->skip(place - here) < place - here)
        throw stream::cut_short(input->tell(), "harbor6::cab::Archive");
}

std::vector<std::size_t> Volume::expansionOrder(std::size_t last) const {
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < folders.size(); ++i)
        if (i != last && hasPlace(i))
            order.push_back(i);
    std::stable_sort(order.begin(), order.end(), [this](std::size_t a, std::size_t b) {
        return folders[a].data_offset < folders[b].data_offset;
    });
    if (order.size() + (last < folders.size()) < folders.size()) {
        // A folder whose place makes no sense comes behind the one before it.
        std::vector<std::size_t> all;
        const auto add_misplaced = [&](std::size_t i) {
            for (; i < folders.size() && i != last && !hasPlace(i); ++i)
                all.push_back(i);
        };
        add_misplaced(0);
        for (const auto i : order) {
            all.push_back(i);
            add_misplaced(i + 1);
        }
        order = std::move(all);
    }
    if (last < folders.size())
        order.push_back(last);
    return order;
}

Volume::Complaint Volume::goToData(std::size_t folder) {
    Complaint complaint;
    at_data = false;
    if (folders[folder].block_count == 0)
        return complaint;
    if (makesSense(folders[folder].data_offset)) {
        goTo(start + folders[folder].data_offset);
        if (input->tell() < furthest && read_bytes > most_readings * (furthest - start))
            throw format::exception("too many folders share data: " + std::to_string(most_readings) +
                                        " times the cabinet's bytes have been read",
                                    "harbor6::cab::Archive");
    } else {
        complaint = named("the stated place of a folder's data makes no sense; they are read behind those "
                          "of the folder before it");
        goBehindLast(folder);
    }
    data_begin = input->tell();
    next_folder = folder + 1;
    at_data = true;
    return complaint;
}

void Volume::passOver(std::size_t folder) {
    const auto& record = folders[folder];
    if (record.block_count == 0 || !makesSense(record.data_offset))
        return; // its blocks are counted with those of the folder before it
    behind_last = start + record.data_offset;
    blocks_left = record.block_count;
    next_folder = folder + 1;
}

/// Goes behind the data that were read last, and behind those of the folders from there up to `folder`.
void Volume::goBehindLast(std::size_t folder) {
    goTo(behind_last);
    for (auto i = next_folder; i < folder; ++i)
        blocks_left += folders[i].block_count;
    // What was skipped stays so if the input ends here.
    next_folder = std::max(next_folder, folder);
    ::format::cab::data_header block;
    block.reserve = header.has_reserve ? &header.reserve.value : nullptr;
    for (; blocks_left > 0; --blocks_left) {
        try {
            block.skip(*input);
        } catch (const stream::exception&) {
            if (isAtEnd())
                throw cutShort();
            throw;
        }
        behind_last = input->tell();
    }
}

void Volume::endData(std::uint32_t left) {
    if (!std::exchange(at_data, false))
        return; // a folder without blocks
    behind_last = input->tell();
    blocks_left = left;
    read_bytes += behind_last - data_begin;
    furthest = std::max(furthest, behind_last);
}

} // namespace harbor6::cab
