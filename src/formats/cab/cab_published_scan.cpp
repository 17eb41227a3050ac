#include "formats/cab/cab_published_scan.h"

#include "formats/cab/cab_archive.h"
#include "formats/cab/cab_item_reader.h"
#include "formats/cab/cab_published_blocks.h"
#include "formats/cab/cab_published_rules.h"
#include "harbor6/groundwork/exception.h"
#include "harbor6/model/volume_source.h"
#include "harbor6/shell/client_interface.h"
#include "harbor6/shell/harbor_shell.h"

#include <utility>

namespace harbor6::cab {

namespace published = ::format::cab::published;

namespace {

constexpr char reporter[] = "harbor6::cab::Archive::addContentTo";

/// Calls `handle` with the text of `failure` if it concerns what the archive holds. Other failures are those
/// of the host, the target or memory, and false is returned.
template<class Handle>
bool if_of_content(const std::exception_ptr& failure, Handle handle) {
    try {
        std::rethrow_exception(failure);
    } catch (const stream::exception& known) {
        handle(known.message(), false);
    } catch (const format::exception& known) {
        handle(known.message(), true);
    } catch (const algorithm::exception& known) {
        handle(known.message(), true);
    } catch (const basic::algorithm_exception& known) {
        handle(std::string(known.what()), true);
    } catch (...) {
        return false;
    }
    return true;
}

} // namespace

PublishedScan::PublishedScan(Archive& scanned, Folder& into, ContainerAdaptor* list)
    : archive(scanned), targets(scanned, into, list), texts{scanned.options.longest_path, true, false, true} {
}

void PublishedScan::run() {
    openFirst();
    startVolume(nullptr);
    for (;;) {
        const auto index = here->header.cabinet_index;
        if (!archive.options.records_only)
            expandVolume();
        if (ended || stuck)
            return;
        // A folder that spans volumes has moved the pass on.
        if (here->header.cabinet_index == index && !openNext())
            return;
    }
}

/// Opens the archive's own volume, or the first of its set if that can be found.
void PublishedScan::openFirst() {
    here = std::make_unique<Volume>(std::string(), archive.storageInput(0), texts);
    own_index = here->header.cabinet_index;
    if (!archive.volumes) {
        if (here->header.has_next)
            throw un::implemented("expansion of segmented CAB archives not supported");
        return;
    }
    while (here->header.has_previous) {
        const auto& header = here->header;
        std::unique_ptr<Volume> previous;
        try {
            // The index falls by one each time, so this ends; none is in front of number 0.
            previous = open(header.previous_cabinet.value, header.previous_disk.value,
                            header.cabinet_index - std::int64_t{1}, "from which it goes on");
        } catch (const un::exception&) {
            tell(std::current_exception());
            break;
        }
        here = std::move(previous);
    }
}

/// Opens another volume of the set of `here`. Raises un::exception if there is none, or another.
std::unique_ptr<Volume> PublishedScan::open(const std::string& name, const std::string& disk,
                                            std::int64_t index, const char* relation) {
    const std::uint32_t set = here->header.set_id;
    const auto agrees = [set, index](const ::format::cab::archive_header& header) {
        return header.set_id == set && header.cabinet_index == index;
    };
    if (index == own_index && !here->name.empty())
        return std::make_unique<Volume>(std::string(), archive.storageInput(0), texts);
    const auto matches = [&](stream::input& bytes) {
        ::format::cab::archive_header header;
        header.texts = texts;
        try {
            header.read(bytes, true);
        } catch (const stream::exception&) {
            return false;
        } catch (const format::exception&) {
            return false;
        }
        // The number of a set may be that of another one: the neighbour's name tells them apart.
        const bool forward = index > here->header.cabinet_index;
        const auto& neighbour = forward ? header.previous_cabinet : header.next_cabinet;
        return agrees(header) && (forward ? header.has_previous : header.has_next) &&
               (here->name.empty() || neighbour.value == here->name);
    };
    const auto refusal = [&](const std::string& what) {
        return un::exception(std::string(name).append(what), reporter);
    };
    auto bytes = archive.volumes->openVolume({name, disk, set, static_cast<std::uint32_t>(index), matches});
    if (!bytes)
        throw refusal(std::string(disk.empty() ? ", " : " (disk " + disk + "), ")
                          .append(relation)
                          .append(", is missing"));
    std::unique_ptr<Volume> volume;
    const auto refuse_content = [&](const std::string& text, bool) { throw refusal(": " + text); };
    try {
        volume = std::make_unique<Volume>(name, std::move(bytes), texts);
    } catch (...) {
        if_of_content(std::current_exception(), refuse_content);
        throw;
    }
    const auto& header = volume->header;
    if (header.set_id != set)
        throw refusal(" is a part of another set of cabinets");
    if (index < 0)
        throw refusal(" can't come before number 0 of its set");
    if (header.cabinet_index != index)
        throw refusal(std::string(" has the number ")
                          .append(std::to_string(header.cabinet_index))
                          .append(" in its set, and number ")
                          .append(std::to_string(index))
                          .append(" is needed"));
    return volume;
}

/// Reads the records of `here`, and makes the targets. `carried` are the files of a folder that goes on from
/// the volume before, null if there is none.
void PublishedScan::startVolume(Files carried) {
    auto known = std::move(spanning);
    spanning.clear();
    folders.clear();
    complain(here->readFolders());
    for (std::size_t i = 0; i < here->folders.size(); ++i)
        folders.push_back(newFiles());
    std::vector<RangeSplitter::range> of_folder_0; // until it is known whether it is the carried one
    for (std::uint32_t i = 0; i < here->header.file_count && !ended && !here->records_cut; ++i)
        addFile(known, carried ? &of_folder_0 : nullptr);
    here->endRecords();
    if (!here->continues_in && !here->continues_out)
        spanning = std::move(known);
    // Without `carried` the beginning of such a folder is missing, and so its files can't be expanded.
    if (here->continues_in)
        folders.front() = carried ? std::move(carried) : newFiles();
    for (auto& file : of_folder_0)
        folders.front()->add(std::move(file));
}

/// Reads the next record, and makes its target. A file of folder 0 goes into `of_folder_0` if that isn't
/// null.
void PublishedScan::addFile(const std::set<Identity>& known, std::vector<RangeSplitter::range>* of_folder_0) {
    const auto record = std::make_shared<::format::cab::file_header>();
    record->texts = texts;
    try {
        record->read(*here->input, true);
    } catch (const stream::cut_short&) {
        return tellCutRecords(std::current_exception());
    } catch (const stream::exception&) {
        if (!here->isAtEnd())
            throw;
        return tellCutRecords(std::make_exception_ptr(here->cutShort()));
    }
    const auto folder = published::folder_of(*record, here->header);
    const bool continued = folder && record->folder_index >= here->folders.size();
    if (!folder || (continued && !archive.volumes)) {
        tell(std::make_exception_ptr(format::exception(
            here->named(record->name + ": invalid folder_index in file_header"), reporter)));
        return;
    }
    if (continued) {
        const Identity identity(record->name, record->size, record->folder_offset);
        if (published::goes_on_in_next(*record)) {
            here->continues_out = true;
            spanning.insert(identity);
        }
        if (published::comes_from_previous(*record)) {
            here->continues_in = true;
            if (known.count(identity))
                return;
        }
    }
    record->folder_index = static_cast<std::uint16_t>(*folder); // what the items tell
    pattern::AcquiredPtr<File> target;
    if (!targets.find(record, here->folders[*folder].compression, target)) {
        ended = true;
    } else if (target) {
        RangeSplitter::range file{record->folder_offset, record->size, std::move(target)};
        if (*folder == 0 && of_folder_0)
            of_folder_0->push_back(std::move(file));
        else
            folders[*folder]->add(std::move(file));
    }
}

/// The volume ends inside its file records. The data of the files before may be in front of them.
void PublishedScan::tellCutRecords(const std::exception_ptr& failure) {
    here->records_cut = here->told_cut = true;
    if (here->name.empty())
        tell(failure);
    else
        complain(here->named(here->cutShort().message()));
}

auto PublishedScan::newFiles() const -> Files {
    auto files = std::make_shared<RangeSplitter>(archive.scratchSpace());
    files->at_once = archive.options.files_at_once;
    files->damaged = [this](File& target) {
        archive.shell().client().itemFailed(ClientInterface::checksum_failed, archive, target);
    };
    return files;
}

void PublishedScan::expandVolume() {
    const bool continues_in = here->continues_in;
    const auto last = here->continues_out ? here->folders.size() - 1 : here->folders.size();
    for (const auto i : here->expansionOrder(last)) {
        if (ended || stuck)
            return;
        // The blocks of a folder that comes from an earlier volume follow those in that volume.
        if (i > 0 || !continues_in)
            expandFolder(i);
    }
}

/// Expands one folder, with what it holds in the next volumes. A failure of its content ends it alone.
void PublishedScan::expandFolder(std::size_t index) {
    const auto files = folders[index];
    std::exception_ptr failure;
    try {
        expandInto(*files, index);
    } catch (...) {
        failure = std::current_exception();
    }
    try {
        files->finish();
    } catch (...) {
        if (!failure)
            throw;
    }
    if (failure)
        tellFailure(failure, files->endedEarly());
    if (files->leftOut() > 0)
        complain(here->named(
            "the files of a folder share too many bytes: " + std::to_string(files->leftOut()) +
            " of them, beyond " + std::to_string(RangeSplitter::shared_times) + " times its bytes and " +
            std::to_string(RangeSplitter::shared_bytes >> 30) + " GiB, are left out"));
}

void PublishedScan::expandInto(RangeSplitter& files, std::size_t index) {
    const auto& options = archive.options;
    const bool spans = here->continues_out && index + 1 == here->folders.size();
    files.start();
    if (options.wanted_only && !spans && !files.wantsMore())
        return here->passOver(index);
    complain(here->goToData(index));
    const auto record = here->folders[index]; // outlives the volume
    PublishedBlocks blocks(
        *here, index,
        {[&](bool goes_on) { return ended || (options.wanted_only && !goes_on && !files.wantsMore()); },
         [this] { return moveOn(); },
         [&] {
             if (!options.ignore_checksums)
                 throw format::crc_exception("CRC mismatch, data is invalid", reporter);
         },
         [&](std::uint64_t size) { files.markDamaged(size); }});
    reader.folder = &record;
    reader.published_rules = true;
    reader.expand(blocks, files);
}

/// Opens the next volume, and goes to the data of its folder 0 if the last folder of `here` goes on there.
/// Null if the client ended the pass.
Volume* PublishedScan::moveOn() {
    stuck = true;
    const auto& header = here->header;
    const bool spans = here->continues_out;
    here = open(header.next_cabinet.value, header.next_disk.value, header.cabinet_index + std::int64_t{1},
                "in which it goes on");
    try {
        startVolume(spans ? folders.back() : nullptr);
    } catch (...) {
        if_of_content(std::current_exception(), [this](const std::string& text, bool) {
            throw un::exception(here->named(here->isAtEnd() ? here->cutShort().message() : text), reporter);
        });
        throw;
    }
    stuck = false;
    if (ended)
        return nullptr;
    if (spans && here->continues_in && !archive.options.records_only)
        complain(here->goToData(0));
    return here.get();
}

/// Opens the next volume if there is one. Returns false if that ends the pass.
bool PublishedScan::openNext() {
    if (!here->header.has_next || !archive.volumes)
        return false;
    try {
        return moveOn() != nullptr;
    } catch (const un::exception&) {
        if (!stuck)
            throw;
        tell(std::current_exception());
        return false;
    }
}

void PublishedScan::complain(const Volume::Complaint& complaint) {
    if (complaint)
        tell(std::make_exception_ptr(stream::exception(*complaint, reporter)));
}

/// Tells the client of damage. Raises `failure` if the pass is to end.
void PublishedScan::tell(const std::exception_ptr& failure) {
    if (!archive.shell().client().sourceArchiveDamaged(archive, failure))
        std::rethrow_exception(failure);
}

/// Tells the client of a folder's failure, with the volume in which it arose, and as one of data only if it
/// ended a file. Raises what isn't a failure of the archive's content.
void PublishedScan::tellFailure(const std::exception_ptr& failure, bool in_a_file) {
    if (stuck) {
        try {
            std::rethrow_exception(failure);
        } catch (const un::exception&) {
            tell(failure); // it names the volume that can't be read
        }
        return;
    }
    std::exception_ptr named = failure;
    const bool of_content = if_of_content(failure, [&](const std::string& text, bool in_data) {
        if (here->name.empty() && (in_a_file || !in_data))
            return;
        named = in_data && in_a_file
                    ? std::make_exception_ptr(format::exception(here->named(text), reporter))
                    : std::make_exception_ptr(stream::exception(here->named(text), reporter));
    });
    if (!of_content)
        std::rethrow_exception(failure);
    try {
        std::rethrow_exception(failure);
    } catch (const stream::cut_short&) {
        if (std::exchange(here->told_cut, true))
            return;
    } catch (...) {
    }
    tell(named);
}

} // namespace harbor6::cab
