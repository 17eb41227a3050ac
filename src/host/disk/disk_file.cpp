#include "host/disk/disk_file.h"

#include "harbor6/stream/output.h"
#include "host/disk/disk_folder.h"
#include "host/platform/file_input.h"
#include "host/platform/random_file.h"

#include <cstring>
#include <utility>

namespace host {

namespace {

constexpr unsigned buffer_size = 65536;
constexpr unsigned large = 16384; ///< from here on copying costs more than the call

} // namespace

file_output::file_output(std::shared_ptr<file_writer> file) : transfer(std::move(file)) {}

file_output::~file_output() {
    try {
        flush();
    } catch (const un::exception&) {
        // The transfer is marked as failed, and its owner reports it.
    }
}

void file_output::write(const char* buffer, unsigned length) {
    if (length >= large || length > buffer_size - pending) {
        flush();
        if (length >= large) {
            transfer->write(buffer, length);
            return;
        }
    }
    if (!gathered)
        gathered = std::make_unique_for_overwrite<char[]>(buffer_size);
    std::memcpy(gathered.get() + pending, buffer, length);
    pending += length;
}

void file_output::write(char byte) {
    write(&byte, 1);
}

std::uint64_t file_output::tell() const {
    return transfer->watch.counted() + pending;
}

void file_output::flush() {
    if (pending > 0)
        transfer->write(gathered.get(), std::exchange(pending, 0));
}

void file_output::segment_begins(std::uint64_t size) {
    transfer->watch.expect(size);
}

namespace {

/// The moment that a calendar time means where this program runs.
std::optional<std::time_t> local_moment(const fs::time& time) {
    std::tm parts = {};
    parts.tm_year = static_cast<int>(time.year) - 1900;
    parts.tm_mon = static_cast<int>(time.month) - 1;
    parts.tm_mday = static_cast<int>(time.day);
    parts.tm_hour = static_cast<int>(time.hour);
    parts.tm_min = static_cast<int>(time.minute);
    parts.tm_sec = static_cast<int>(time.second);
    parts.tm_isdst = -1; // whatever was in force on that day
    const auto moment = std::mktime(&parts);
    return moment == -1 ? std::nullopt : std::optional(moment);
}

} // namespace

harbor6::data::CountedInput DiskFork::input(bool /*expanding*/) const {
    if (!owner->stands())
        return {};
    auto file = owner->expansion.target.open_file(owner->folder(), owner->name());
    return harbor6::data::CountedInput(std::make_unique<file_input>(std::move(file), owner->path()));
}

harbor6::data::random::CountedInput DiskFork::randomInput(bool /*expanding*/, bool /*shared*/) const {
    if (!owner->stands())
        return {};
    auto file = owner->expansion.target.open_file(owner->folder(), owner->name());
    return harbor6::data::random::CountedInput(
        std::make_unique<random_file_input>(std::move(file), owner->path()));
}

harbor6::data::CountedOutput DiskFork::output(bool /*expanding*/) {
    // The bytes of a file that can't be had still have to go somewhere.
    if (!owner->begin())
        return harbor6::data::CountedOutput(std::make_unique<stream::infinite_output>());
    return harbor6::data::CountedOutput(std::make_unique<file_output>(owner->transfer));
}

harbor6::data::random::CountedOutput DiskFork::randomOutput(bool /*expanding*/) {
    if (!owner->begin())
        return {};
    return harbor6::data::random::CountedOutput(std::make_unique<random_file_output>(owner->transfer));
}

DiskFile::DiskFile(expansion_state& shared, std::shared_ptr<const std::string> folder)
    : OneForkFile(this), PlainItem(shared.format), state(nameless), expansion(shared),
      folder_path(std::move(folder)) {}

DiskFile::DiskFile(expansion_state& shared, std::shared_ptr<const std::string> folder, std::string name,
                   bool regular)
    : OneForkFile(this), PlainItem(shared.format), state(regular ? existing : existing_other),
      expansion(shared), folder_path(std::move(folder)), file_name(std::move(name)) {}

DiskFile::~DiskFile() {
    if (promised)
        expansion.forget(*this);
    if (state == wanted)
        expansion.log.missing(path());
    else if (state == writing)
        expansion.log.unfinished(path(), transfer->watch.counted(), transfer->failed_write());
}

bool DiskFile::isCreated() {
    return state != nameless && state != wanted;
}

harbor6::Folder* DiskFile::acquireParent() {
    return new DiskFolder(expansion, folder_path, {});
}

void DiskFile::erase() {
    if (state == writing) {
        transfer->discard();
        transfer.reset();
        state = settled;
    } else if (state != settled || made) {
        expansion.target.remove_file(folder(), name());
        made = false;
    }
}

void DiskFile::adoptForks(const harbor6::File& source) {
    File::adoptForks(source);
    commitItem();
}

/// Whether there is a transfer to write into.
bool DiskFile::begin() {
    if (state != wanted)
        return false;
    try {
        transfer = std::make_shared<file_writer>(expansion.target, folder(), name(), replacing);
        state = writing;
    } catch (const path_error& obstacle) {
        state = settled;
        expansion.log.refused(path(), obstacle.message());
    }
    return state == writing;
}

void DiskFile::commitItem() {
    if (state != writing)
        return;
    state = settled;
    const auto written = transfer->watch.counted();
    if (transfer->whole()) {
        try {
            transfer->finish(modified);
            made = true;
            expansion.log.done(path(), written);
        } catch (const un::exception& failure) {
            expansion.log.unfinished(path(), written, failure.message());
        }
    } else {
        expansion.log.unfinished(path(), written, transfer->failed_write());
    }
    transfer.reset();
}

std::string DiskFile::itemName() const {
    return file_name;
}

bool DiskFile::setItemName(const std::string& value) {
    if (!directory_tree::name_fault(value).empty())
        return false;
    if (stands()) {
        if (value != name())
            expansion.target.rename(path(), directory_tree::join(folder(), value), false);
        if (promised)
            expansion.forget(*this);
        promised = false;
        file_name = value;
        return true;
    }
    if (state != nameless)
        return false;
    file_name = value;
    state = wanted;
    replacing = expansion.take_replaceable(folder(), value);
    promised = expansion.promise(*this);
    return true;
}

bool DiskFile::setItemTime(const any::time& time) {
    modified = local_moment(fs::time(time));
    return true;
}

std::optional<fs::Spec> DiskFile::identity() const {
    return expansion.target.identity(folder(), name());
}

} // namespace host
