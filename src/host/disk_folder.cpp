#include "host/disk_folder.h"

#include "host/disk_file.h"
#include "outside/groundwork/text.h"

namespace host {

namespace key = harbor6::key;
namespace key_id = harbor6::key_id;

DiskFolder::DiskFolder(disk_session& shared_session)
    : session(shared_session), folder_path(std::make_shared<const std::string>()) {}

DiskFolder::DiskFolder(disk_session& shared_session, std::shared_ptr<const std::string> path,
                       std::string reason)
    : session(shared_session), folder_path(std::move(path)), obstacle(std::move(reason)) {}

void DiskFolder::make() {
    if (!obstacle.empty() || session.target.recently_open(path()))
        return;
    try {
        session.target.make_folder(path());
    } catch (const disk_obstacle& reason) {
        obstacle = reason.message();
    }
}

std::string DiskFolder::refusal(const std::string& name) {
    auto reason = disk_target::refusal(name);
    if (!reason.empty())
        return reason;
    make();
    return obstacle;
}

void DiskFolder::destroy() {
    delete this;
}

const harbor6::Format& DiskFolder::format() const {
    return session.format;
}

harbor6::Format& DiskFolder::format() {
    return session.format;
}

bool DiskFolder::isCreated() {
    return !obstacle.empty() || session.target.recently_open(path());
}

void DiskFolder::create() {
    commitItem();
}

void DiskFolder::commitItem() {
    if (!session.folders_on_demand)
        make();
}

harbor6::Folder* DiskFolder::acquireParent() {
    if (path().empty())
        return nullptr;
    return new DiskFolder(session, session.target.intern(nio::stem(path(), '/')), {});
}

disk_entry DiskFolder::look(const std::string& name) const {
    if (!obstacle.empty() || !disk_target::refusal(name).empty() || session.is_replaceable(path(), name))
        return disk_entry::none;
    if (session.is_promised(path(), name))
        return disk_entry::file;
    try {
        return session.target.look(path(), name);
    } catch (const disk_obstacle&) {
        // It can't be looked at, so it can't be made either, and whoever tries hears why.
        return disk_entry::none;
    }
}

harbor6::Item* DiskFolder::acquireItemFromName(const std::string& name) {
    switch (const auto entry = look(name)) {
    case disk_entry::none:
        return nullptr;
    case disk_entry::folder:
        return new DiskFolder(session, session.target.intern(disk_target::join(path(), name)), {});
    default:
        return new DiskFile(session, folder_path, name, entry == disk_entry::file);
    }
}

bool DiskFolder::hasItemNamed(const std::string& name) const {
    return look(name) != disk_entry::none;
}

harbor6::File* DiskFolder::_newFile() {
    return new DiskFile(session, folder_path);
}

harbor6::Folder* DiskFolder::_newFolder() {
    pattern::AcquiredPtr<DiskFolder> folder(new DiskFolder(session, folder_path, obstacle));
    folder->named = false;
    return folder.detach();
}

bool DiskFolder::hasString(const std::string& key) const {
    return idFromName(key) == key_id::name || Folder::hasString(key);
}

bool DiskFolder::getString(const std::string& key, std::string& value) const {
    if (idFromName(key) != key_id::name)
        return Folder::getString(key, value);
    value = nio::leaf(path(), '/');
    return true;
}

bool DiskFolder::setString(const std::string& key, const std::string& value) {
    if (idFromName(key) != key_id::name)
        return Folder::setString(key, value);
    if (named)
        return false;
    named = true;
    if (value.empty())
        return true;
    if (const auto reason = disk_target::refusal(value); !reason.empty() && obstacle.empty())
        obstacle = "cannot use folder " + nio::printable(value) + ": " + reason;
    folder_path = session.target.intern(disk_target::join(path(), value));
    return true;
}

void DiskFolder::populateIndex() const {
    if (!index().empty())
        return;
    Folder::populateIndex();
    index()[key::name] = key_id::name;
}

harbor6::Attributes::Index* DiskFolder::newIndex() const {
    static Index shared;
    return &shared;
}

} // namespace host
