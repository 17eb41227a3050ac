#include "harbor6/hosts/disk_file.h"

#include "harbor6/hosts/disk_folder.h"
#include "harbor6/hosts/file_output.h"
#include "harbor6/posix/file_input.h"
#include "harbor6/posix/file_writer.h"
#include "harbor6/posix/random_file.h"
#include "harbor6/posix/system_error.h"
#include "harbor6/stream/output.h"

namespace host {

namespace {

/// Interprets `time` in the local time zone.
std::optional<std::time_t> local_moment(const fs::time& time) {
    std::tm parts = {};
    parts.tm_year = static_cast<int>(time.year) - 1900;
    parts.tm_mon = static_cast<int>(time.month) - 1;
    parts.tm_mday = static_cast<int>(time.day);
    parts.tm_hour = static_cast<int>(time.hour);
    parts.tm_min = static_cast<int>(time.minute);
    parts.tm_sec = static_cast<int>(time.second);
    parts.tm_isdst = -1; // as summer time was on that day
    const auto moment = std::mktime(&parts);
    return moment == -1 ? std::nullopt : std::optional(moment);
}

} // namespace

/// The data of a file that is being written, and its writer.
class DiskFile::Arrival : public arrival {
public:
    Arrival(directory_tree& target, const std::string& folder, const std::string& name, bool replacing)
        : writer(target, folder, name, replacing) {}

    file_writer writer;
};

std::shared_ptr<file_writer> DiskFile::writer() const {
    return {data, &static_cast<Arrival&>(*data).writer};
}

harbor6::data::CountedInput DiskFork::input(bool /*expanding*/) const {
    return owner->onDisk() ? harbor6::data::CountedInput(new file_input(owner->open(), owner->path()))
                           : harbor6::data::CountedInput();
}

harbor6::data::random::CountedInput DiskFork::randomInput(bool /*expanding*/, bool /*shared*/) const {
    return owner->onDisk()
               ? harbor6::data::random::CountedInput(new random_file_input(owner->open(), owner->path()))
               : harbor6::data::random::CountedInput();
}

harbor6::data::CountedOutput DiskFork::output(bool /*expanding*/) {
    if (!owner->begin())
        return harbor6::data::CountedOutput(new stream::infinite_output);
    try {
        return harbor6::data::CountedOutput(
            new file_output(owner->writer(), owner->data, owner->expansion.behind.get()));
    } catch (...) { // no stream will say that bytes are missing
        owner->data->fail({});
        throw;
    }
}

harbor6::data::random::CountedOutput DiskFork::randomOutput(bool /*expanding*/) {
    return owner->begin() ? harbor6::data::random::CountedOutput(new random_file_output(owner->writer()))
                          : harbor6::data::random::CountedOutput();
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
    if (state == writing) {
        data->fail(writer()->failure());
        data->set_received(writer()->size());
        data->report(expansion.log, path());
    }
}

file_descriptor DiskFile::open() const {
    return expansion.target.open_file(folder(), name());
}

bool DiskFile::isCreated() {
    return state != nameless && state != wanted;
}

bool DiskFile::isOlderThan(const any::time& time) const {
    const auto limit = local_moment(fs::time(time));
    const auto own = expansion.target.modified(folder(), name());
    return limit && own && *own < *limit;
}

void DiskFile::cloneAttributes(const harbor6::Attributes& source, bool withName) {
    File::cloneAttributes(source, withName);
    if (!expansion.keeps_attributes)
        return;
    source.getBoolean(harbor6::key::readOnly, read_only);
    source.getBoolean(harbor6::key::executable, executable);
}

harbor6::Folder* DiskFile::acquireParent() {
    return new DiskFolder(expansion, folder_path, {});
}

void DiskFile::erase() {
    if (state == writing) {
        if (expansion.behind)
            expansion.behind->settle();
        writer()->discard();
        data.reset();
        state = settled;
    } else if (state == existing || state == existing_other || made) {
        expansion.target.remove_file(folder(), name());
        made = false;
    }
}

/// Creates the file. Reports and returns false if that is impossible.
bool DiskFile::begin() {
    if (state != wanted)
        return false;
    try {
        const auto begun = std::make_shared<Arrival>(expansion.target, folder(), name(),
                                                     replacing || expansion.replaces_all);
        if (modified != no_time)
            begun->writer.set_time(modified);
        begun->writer.set_permissions({read_only, executable});
        data = begun;
        state = writing;
        expansion.log.begun(path());
    } catch (const fs::Exception& failure) {
        // The next file may be small enough, or go into another folder.
        state = settled;
        expansion.log.refused(path(), failure.message());
    }
    return state == writing;
}

void DiskFile::commitItem() {
    if (state != writing)
        return;
    state = settled;
    const auto ended = writer();
    if (!ended->failure().empty())
        data->fail(ended->failure());
    data->set_received(ended->size());
    if (data->complete()) {
        try {
            ended->finish();
            made = true;
        } catch (const path_error& failure) {
            expansion.log.refused(path(), failure.message());
            data.reset();
            return;
        } catch (const un::exception& failure) {
            data->fail(failure.message());
        }
    }
    data->report(expansion.log, path());
    data.reset();
}

std::string DiskFile::itemName() const {
    return file_name;
}

bool DiskFile::setItemName(const std::string& value) {
    if (!name_fault(value).empty())
        return false;
    if (onDisk()) {
        if (value != name())
            expansion.target.rename(path(), join_path(folder(), value), false);
        if (promised)
            expansion.forget(*this);
        promised = false;
        file_name = value;
        return true;
    }
    if (state != nameless)
        return false;
    file_name = expansion.changed(value);
    state = wanted;
    replacing = expansion.take_replaceable(folder(), file_name);
    promised = expansion.promise(*this);
    return true;
}

bool DiskFile::setItemTime(const any::time& time) {
    if (!expansion.keeps_times)
        return true;
    modified = local_moment(fs::time(time)).value_or(no_time);
    return state != writing || modified == no_time || writer()->set_time(modified);
}

bool DiskFile::isOfThisExpansion() const {
    return expansion.is_promised(folder(), name()) || expansion.target.was_made(folder(), name());
}

std::optional<fs::Spec> DiskFile::identity() const {
    return expansion.target.identity(folder(), name());
}

} // namespace host
