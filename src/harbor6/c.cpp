#include "harbor6/c.h"

#include "harbor6/c_archive.h"
#include "harbor6/groundwork/text.h"
#include "harbor6/hosts/disk_folder.h"
#include "harbor6/hosts/volume_finder.h"
#include "harbor6/model/scratch_log.h"
#include "harbor6/posix/file_input.h"
#include "harbor6/stream/positioned_input.h"

#include <algorithm>

struct harbor6_stream {
    harbor6::ScratchLog bytes{harbor6::ScratchSpace::standard()};
    std::uint64_t place = 0;
};

namespace c_interface {

/// The status for the exception in flight.
harbor6_status status_in_flight() {
    try {
        throw;
    } catch (const aborted&) {
        return HARBOR6_ABORTED;
    } catch (const fs::Exception&) {
        return HARBOR6_SYSTEM;
    } catch (const format::exception& failure) {
        const auto& text = failure.message();
        return text == host::Registry::unknown_format || text == host::Registry::empty_file
                   ? HARBOR6_NOT_AN_ARCHIVE
                   : HARBOR6_BAD_CONTENT;
    } catch (const stream::exception&) {
        return HARBOR6_BAD_CONTENT;
    } catch (const un::implemented&) {
        return HARBOR6_BAD_CONTENT;
    } catch (const basic::bad_alloc&) {
        return HARBOR6_NO_MEMORY;
    } catch (const basic::algorithm_exception&) {
        return HARBOR6_BAD_CONTENT;
    } catch (const std::bad_alloc&) {
        return HARBOR6_NO_MEMORY;
    } catch (...) {
        return HARBOR6_FAILED;
    }
}

harbor6_status keep(harbor6_archive& archive, harbor6_status code, std::string text) noexcept {
    archive.code = code;
    archive.error = std::move(text);
    return code;
}

harbor6_status keep_in_flight(harbor6_archive& archive) noexcept {
    const auto code = status_in_flight();
    try {
        return keep(archive, code, nio::failure_text(std::current_exception()));
    } catch (...) {
        return keep(archive, HARBOR6_NO_MEMORY, {});
    }
}

std::unique_ptr<stream::input> supplied(const harbor6_source& source) {
    const auto read = [from = source](std::uint64_t offset, char* buffer, std::size_t length) {
        std::size_t came = 0;
        if (from.read(from.context, offset, buffer, length, &came) != 0)
            throw aborted();
        if (came > length)
            throw un::exception("the source states more bytes than were wanted", "harbor6/c.h");
        return came;
    };
    return std::make_unique<stream::positioned_input>(read, source.size);
}

} // namespace c_interface

namespace {

using c_interface::aborted;
using c_interface::guarded;
using c_interface::keep;
using c_interface::keep_in_flight;

/// A bound that the caller gave was reached.
class too_long : public qpthr::Cloneable<too_long, un::exception> {
public:
    too_long() : Cloneable("the entry has more bytes than wanted", "harbor6/c.h") {}
};

/// Opens what `bytes` makes, which may set the archive's volumes.
template<class Bytes>
harbor6_status open_archive(const harbor6_formats* formats, harbor6_archive** result, Bytes bytes) noexcept {
    *result = new (std::nothrow) harbor6_archive;
    if (!*result)
        return HARBOR6_NO_MEMORY;
    auto& archive = **result;
    try {
        if (formats->registry.classifier.formats().empty())
            throw un::exception("no formats are loaded", "harbor6/c.h");
        auto opened = bytes(archive);
        archive.reader = std::make_unique<host::ArchiveReader>(formats->registry, std::move(opened),
                                                               archive.volumes.get());
        archive.format = archive.reader->format().string(harbor6::key::formatName);
        if (archive.reader->head_failure())
            std::rethrow_exception(archive.reader->head_failure());
        return HARBOR6_OK;
    } catch (...) {
        return keep_in_flight(archive);
    }
}

const host::tally_entry* entry_of(const harbor6_archive* archive, std::size_t number) {
    if (!archive || !archive->reader || number >= archive->reader->entries().size())
        return nullptr;
    return &archive->reader->entries()[number];
}

/// Null if the entry has no attribute of that key and type.
template<class T>
const T* attribute(const harbor6_archive* archive, std::size_t number, const char* key) {
    const auto* const entry = entry_of(archive, number);
    if (!entry || !key)
        return nullptr;
    const auto found = entry->attributes.find(key);
    return found == entry->attributes.end() ? nullptr : std::get_if<T>(&found->second);
}

/// Keeps all that comes out of a descriptor which can't seek.
std::unique_ptr<stream::input> kept(host::file_input& source) {
    const auto log = std::make_shared<harbor6::ScratchLog>(harbor6::ScratchSpace::standard());
    char piece[16384];
    while (const auto came = source.read(piece, sizeof piece))
        log->append(piece, came);
    const auto read = [log](std::uint64_t offset, char* buffer, std::size_t length) -> std::size_t {
        return log->read(offset, buffer, static_cast<unsigned>(length));
    };
    return std::make_unique<stream::positioned_input>(read, log->size());
}

std::unique_ptr<stream::input> opened(host::file_descriptor descriptor, const std::string& name) {
    auto file = std::make_unique<host::file_input>(std::move(descriptor), name);
    if (file->size() == ~std::uint64_t{0})
        return kept(*file);
    return file;
}

/// Finds the volumes of an archive among the parts that the caller supplied.
class part_list : public harbor6::VolumeSource {
public:
    part_list(const harbor6_part* first, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            parts.emplace_back(first[i].name ? first[i].name : "", first[i].source);
    }

    harbor6::data::CountedInput openVolume(const harbor6::VolumeRequest& request) override {
        const auto find = [&](bool same_name, bool matching) -> harbor6::data::CountedInput {
            for (const auto& [name, source] : parts) {
                if ((name == request.name) != same_name)
                    continue;
                harbor6::data::CountedInput bytes(c_interface::supplied(source));
                if (!matching || (request.matches(*bytes) && bytes->seek(0)))
                    return bytes;
            }
            return {};
        };
        // The number of a set is often that of others too, so the name decides first. One of that name that
        // doesn't fit is returned too: the archive says what is wrong with it.
        auto found = find(true, true);
        if (!found)
            found = find(false, true);
        return found ? found : find(true, false);
    }

private:
    std::vector<std::pair<std::string, harbor6_source>> parts;
};

class c_receiver : public host::entry_receiver {
public:
    explicit c_receiver(const harbor6_receiver& functions) : to(functions) {}

    bool wants(std::size_t entry) override {
        const bool wanted = !to.wants || to.wants(to.context, entry) != 0;
        missing += wanted ? 1 : 0;
        return wanted;
    }
    void bytes(std::size_t entry, std::string_view more) override {
        if (to.bytes && to.bytes(to.context, entry, more.data(), more.size()) != 0)
            throw aborted();
    }
    void ended(std::size_t entry, bool complete) override {
        missing -= complete ? 1 : 0;
        if (to.ended)
            to.ended(to.context, entry, complete ? 1 : 0);
    }

    std::size_t missing = 0; ///< wanted entries that are not complete

private:
    const harbor6_receiver& to;
};

/// Keeps the bytes of one entry.
class kept_entry : public host::entry_receiver {
public:
    kept_entry(std::size_t entry, std::uint64_t bound, harbor6_stream& into)
        : number(entry), most(bound), target(into) {}

    bool wants(std::size_t entry) override { return entry == number; }
    void bytes(std::size_t /*entry*/, std::string_view more) override {
        if (more.size() > most - target.bytes.size())
            throw too_long();
        target.bytes.append(more.data(), static_cast<unsigned>(more.size()));
    }
    void ended(std::size_t /*entry*/, bool whole) override { complete = whole; }

    bool complete = false;

private:
    const std::size_t number;
    const std::uint64_t most;
    harbor6_stream& target;
};

/// Tells the caller what became of each file. It is told from destructors too, so nothing is raised here.
class c_journal : public host::journal {
public:
    explicit c_journal(const harbor6_expansion& functions) : to(functions) {}

    void done(const std::string& path, std::uint64_t /*size*/) override { tell(path, HARBOR6_OK, {}); }
    void refused(const std::string& path, const std::string& reason) override {
        tell(path, HARBOR6_FAILED, reason);
    }
    void unfinished(const std::string& path, std::uint64_t size, const std::string& reason) override {
        const auto code = reason.empty() ? HARBOR6_BAD_CONTENT : HARBOR6_SYSTEM;
        tell(path, code,
             "incomplete after " + un::write(size, 10, 1) + " bytes" + (reason.empty() ? "" : ": " + reason));
    }
    void missing(const std::string& path) override { tell(path, HARBOR6_BAD_CONTENT, "no data arrived"); }
    void skipped(const std::string& path, const std::string& reason) override {
        tell(path, HARBOR6_OK, reason);
    }

    bool stop = false;         ///< the caller asked for an end
    std::string first_failure; ///< printable; empty if no file failed

private:
    void tell(const std::string& path, harbor6_status code, const std::string& text) {
        if (code != HARBOR6_OK && first_failure.empty())
            first_failure = nio::printable(path) + ": " + nio::printable(text);
        if (to.report && !stop && to.report(to.context, path.c_str(), code, text.c_str()) != 0)
            stop = true;
    }

    const harbor6_expansion& to;
};

} // namespace

uint32_t harbor6_version(void) {
    return HARBOR6_VERSION;
}

harbor6_formats* harbor6_formats_new(void) {
    try {
        return new harbor6_formats;
    } catch (...) {
        return nullptr;
    }
}

void harbor6_formats_free(harbor6_formats* formats) {
    delete formats;
}

harbor6_status harbor6_formats_load(harbor6_formats* formats, const char* folder) {
    try {
        formats->error.clear();
        auto folders = folder ? std::vector<std::string>{folder} : host::Registry::standard_folders();
        for (const auto& each : folders)
            for (const auto& complaint : formats->registry.load(each))
                formats->error += (formats->error.empty() ? "" : "\n") + complaint;
        formats->names.clear();
        for (const auto& format : formats->registry.classifier.formats())
            formats->names.push_back(format->string(harbor6::key::formatName));
        return formats->error.empty() ? HARBOR6_OK : HARBOR6_FAILED;
    } catch (...) {
        return HARBOR6_NO_MEMORY;
    }
}

const char* harbor6_formats_error(const harbor6_formats* formats) {
    return formats->error.c_str();
}

const char* harbor6_formats_name(const harbor6_formats* formats, size_t number) {
    return number < formats->names.size() ? formats->names[number].c_str() : nullptr;
}

harbor6_status harbor6_set_code_page(const char* name) {
    try {
        nio::set_code_page(c_interface::needed(name, "name"));
        return HARBOR6_OK;
    } catch (...) {
        return c_interface::status_in_flight();
    }
}

harbor6_status harbor6_open_path(const harbor6_formats* formats, const char* path,
                                 harbor6_archive** archive) {
    return open_archive(formats, archive, [&](harbor6_archive& made) {
        c_interface::needed(path, "path");
        auto finder = std::make_unique<host::VolumeFinder>(std::vector<std::string>());
        finder->beginArchive(path);
        made.volumes = std::move(finder);
        return opened(host::open_input(path), "the archive");
    });
}

harbor6_status harbor6_open_descriptor(const harbor6_formats* formats, int descriptor,
                                       harbor6_archive** archive) {
    return open_archive(formats, archive, [&](harbor6_archive&) {
        return opened(host::duplicate_descriptor(descriptor), "the archive");
    });
}

harbor6_status harbor6_open_memory(const harbor6_formats* formats, const void* bytes, size_t length,
                                   harbor6_archive** archive) {
    return open_archive(formats, archive, [&](harbor6_archive&) {
        const std::string_view all(static_cast<const char*>(bytes), length);
        const auto read = [all](std::uint64_t offset, char* buffer, std::size_t wanted) {
            return all.copy(buffer, wanted, static_cast<std::size_t>(offset));
        };
        return std::make_unique<stream::positioned_input>(read, length);
    });
}

harbor6_status harbor6_open_source(const harbor6_formats* formats, const harbor6_source* source,
                                   harbor6_archive** archive) {
    return open_archive(formats, archive, [&](harbor6_archive&) { return c_interface::supplied(*source); });
}

harbor6_status harbor6_open_parts(const harbor6_formats* formats, const harbor6_part* parts, size_t count,
                                  harbor6_archive** archive) {
    return open_archive(formats, archive, [&](harbor6_archive& made) {
        if (count == 0)
            throw un::exception("an archive has at least one part", "harbor6/c.h");
        made.volumes = std::make_unique<part_list>(parts, count);
        return c_interface::supplied(parts->source);
    });
}

void harbor6_close(harbor6_archive* archive) {
    delete archive;
}

harbor6_status harbor6_error_code(const harbor6_archive* archive) {
    return archive ? archive->code : HARBOR6_NO_MEMORY;
}

const char* harbor6_error(const harbor6_archive* archive) {
    if (!archive || (archive->code == HARBOR6_NO_MEMORY && archive->error.empty()))
        return "out of memory";
    return archive->error.c_str();
}

const char* harbor6_format(const harbor6_archive* archive) {
    return archive ? archive->format.c_str() : "";
}

size_t harbor6_count(const harbor6_archive* archive) {
    return archive && archive->reader ? archive->reader->entries().size() : 0;
}

harbor6_status harbor6_lookup(harbor6_archive* archive, const char* path, size_t* entry) {
    return guarded(archive, [&] {
        const auto& entries = archive->reader->entries();
        if (archive->by_path.empty())
            for (std::size_t i = 0; i < entries.size(); ++i)
                archive->by_path.emplace(entries[i].path, i);
        const auto found = archive->by_path.find(c_interface::needed(path, "path"));
        if (found == archive->by_path.end())
            keep(*archive, HARBOR6_NO_ENTRY, "no entry " + nio::printable(path));
        else
            *entry = found->second;
    });
}

const char* harbor6_path(const harbor6_archive* archive, size_t entry) {
    const auto* const found = entry_of(archive, entry);
    return found ? found->path.c_str() : "";
}

uint64_t harbor6_size(const harbor6_archive* archive, size_t entry) {
    const auto* const found = entry_of(archive, entry);
    return found ? found->size : 0;
}

int harbor6_modified(const harbor6_archive* archive, size_t entry, harbor6_time* time) {
    const auto* const found = attribute<fs::time>(archive, entry, harbor6::key::modTime);
    if (!found)
        return 0;
    const auto value = [](std::uint32_t part) { return static_cast<int>(part); };
    *time = {value(found->year), value(found->month),  value(found->day),
             value(found->hour), value(found->minute), value(found->second)};
    return 1;
}

uint32_t harbor6_attributes(const harbor6_archive* archive, size_t entry) {
    constexpr std::pair<const char*, std::uint32_t> flags[] = {
        {harbor6::key::readOnly, HARBOR6_READ_ONLY},
        {harbor6::key::hidden, HARBOR6_HIDDEN},
        {harbor6::key::system, HARBOR6_SYSTEM_FILE},
        {harbor6::key::archive, HARBOR6_ARCHIVE_BIT},
        {harbor6::key::executable, HARBOR6_EXECUTABLE}};
    std::uint32_t all = 0;
    for (const auto& [key, value] : flags)
        if (const auto* const flag = attribute<bool>(archive, entry, key); flag && *flag)
            all |= value;
    return all;
}

const char* harbor6_text(const harbor6_archive* archive, size_t entry, const char* key) {
    const auto* const found = attribute<std::string>(archive, entry, key);
    return found ? found->c_str() : nullptr;
}

int harbor6_number(const harbor6_archive* archive, size_t entry, const char* key, int64_t* value) {
    const auto* const found = attribute<std::int64_t>(archive, entry, key);
    if (found)
        *value = *found;
    return found ? 1 : 0;
}

harbor6_status harbor6_ignore_checksums(harbor6_archive* archive, int ignored) {
    return guarded(archive, [&] { archive->reader->ignore_checksums(ignored != 0); });
}

harbor6_status harbor6_read(harbor6_archive* archive, const harbor6_receiver* receiver) {
    return guarded(archive, [&] {
        c_receiver target(*receiver);
        archive->reader->read(target);
        if (target.missing > 0)
            throw format::exception("entries that are incomplete: " + un::write(target.missing, 10, 1),
                                    "harbor6/c.h");
    });
}

harbor6_status harbor6_open_entry(harbor6_archive* archive, size_t entry, uint64_t most,
                                  harbor6_stream** stream) {
    *stream = nullptr;
    std::unique_ptr<harbor6_stream> made;
    const auto code = guarded(archive, [&] {
        if (!entry_of(archive, entry)) {
            keep(*archive, HARBOR6_NO_ENTRY, "no entry of that number");
            return;
        }
        made = std::make_unique<harbor6_stream>();
        kept_entry target(entry, most, *made);
        try {
            archive->reader->read(target);
        } catch (...) {
            if (!target.complete) // otherwise the damage is in another part of the archive
                throw;
        }
        if (!target.complete)
            throw format::exception("the entry is incomplete", "harbor6/c.h");
    });
    if (code == HARBOR6_OK || code == HARBOR6_BAD_CONTENT)
        *stream = made.release();
    return code;
}

uint64_t harbor6_stream_size(const harbor6_stream* stream) {
    return stream->bytes.size();
}

int64_t harbor6_stream_read(harbor6_stream* stream, void* buffer, size_t length) {
    try {
        constexpr std::size_t most = 1u << 30;
        const auto came = stream->bytes.read(stream->place, static_cast<char*>(buffer),
                                             static_cast<unsigned>(std::min(length, most)));
        stream->place += came;
        return came;
    } catch (...) {
        return -1;
    }
}

uint64_t harbor6_stream_seek(harbor6_stream* stream, uint64_t offset) {
    return stream->place = std::min(offset, stream->bytes.size());
}

void harbor6_stream_close(harbor6_stream* stream) {
    delete stream;
}

harbor6_status harbor6_expand(harbor6_archive* archive, const char* folder,
                              const harbor6_expansion* expansion) {
    const harbor6_expansion chosen = expansion ? *expansion : harbor6_expansion{};
    return guarded(archive, [&] {
        using Existing = host::TargetClient::Existing;
        const auto existing = chosen.existing == HARBOR6_REPLACE ? Existing::replace
                              : chosen.existing == HARBOR6_KEEP  ? Existing::keep
                                                                 : Existing::fail;
        c_journal reports(chosen);
        host::directory_tree tree(c_interface::needed(folder && *folder ? folder : nullptr, "folder"), true);
        tree.keeps_unfinished = (chosen.flags & HARBOR6_KEEP_PARTIAL) != 0;
        tree.syncs = (chosen.flags & HARBOR6_SYNC) != 0;
        host::expansion_state state(tree, archive->reader->plain_format(), reports);
        state.keeps_times = (chosen.flags & HARBOR6_NO_TIMES) == 0;
        state.keeps_attributes = (chosen.flags & HARBOR6_NO_ATTRIBUTES) == 0;
        state.folders_on_demand = chosen.wants != nullptr;
        state.replaces_all = existing == Existing::replace;
        const pattern::AcquiredPtr<host::DiskFolder> top(new host::DiskFolder(state));
        std::exception_ptr failure;
        try {
            archive->reader->expand(*top, reports, existing, [&](std::size_t entry) {
                if (reports.stop)
                    throw aborted();
                return !chosen.wants || chosen.wants(chosen.context, entry) != 0;
            });
        } catch (...) {
            failure = std::current_exception();
        }
        tree.sync_folders();
        if (failure)
            std::rethrow_exception(failure);
        if (reports.stop)
            throw aborted();
        if (!reports.first_failure.empty())
            keep(*archive, HARBOR6_INCOMPLETE, reports.first_failure);
    });
}
