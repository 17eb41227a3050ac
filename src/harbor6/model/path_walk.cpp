#include "harbor6/model/path_walk.h"

#include "harbor6/model/archive.h"
#include "harbor6/shell/client_interface.h"
#include "harbor6/shell/harbor_shell.h"

namespace harbor6 {

using pattern::AcquiredPtr;

namespace {

std::string normalised(std::string_view path, char separator) {
    std::string result;
    bool at_start = true;
    bool separator_pending = false;
    unsigned dots = 0;
    for (std::size_t i = 0; i < path.size(); ++i) {
        const char c = path[i];
        if (c == separator) {
            if (i == 0)
                result += c;
            else if (!at_start)
                at_start = separator_pending = true;
            else
                dots = 0;
        } else if (c == '.' && at_start && dots < 2) {
            ++dots;
        } else {
            at_start = false;
            if (separator_pending)
                result += separator;
            separator_pending = false;
            result.append(dots, '.');
            dots = 0;
            result += c;
        }
    }
    return result;
}

} // namespace

split_path::split_path(std::string_view path, char separating)
    : normal(normalised(path, separating)), separator(separating) {
    if (normal.empty())
        return;
    offsets.push_back(0);
    for (std::size_t i = 0; i < normal.size(); ++i)
        if (normal[i] == separator)
            offsets.push_back(i + 1);
}

split_path::iterator split_path::begin() const {
    return {*this, 0};
}

split_path::iterator split_path::end() const {
    return {*this, offsets.size()};
}

split_path::iterator::iterator(const split_path& walked, std::size_t at) : path(&walked), index(at) {}

std::string split_path::iterator::operator*() const {
    const auto begin = path->offsets[index];
    const bool last = index + 1 == path->offsets.size();
    return path->normal.substr(begin, last ? path->normal.npos : path->offsets[index + 1] - 1 - begin);
}

split_path::iterator& split_path::iterator::operator++() {
    ++index;
    return *this;
}

PathWalk::PathWalk(Archive& scanned, Folder& into, ContainerAdaptor* list, Model maker)
    : archive(scanned), target(into), added(list), model(std::move(maker)) {}

bool PathWalk::walk(const std::string& path, AcquiredPtr<Folder>& parent) {
    parent = AcquiredPtr<Folder>::sharing(target);
    bool first = true;
    for (const std::string token : split_path(path, '/')) {
        AcquiredPtr<Folder> folder;
        if (!first)
            folder = parent->acquireNewFolderFromName(token, false);
        else if (!topFolder(token, parent, folder))
            return true;
        first = false;
        if (!folder->isCreated()) {
            if (!archive.shell().client().targetFolder(*folder, *parent, nullptr))
                return false;
            folder->commitItem();
        }
        parent = std::move(folder);
    }
    return true;
}

/// Finds or makes the top-level folder for `token`. False if the client declined in a name clash.
bool PathWalk::topFolder(const std::string& token, AcquiredPtr<Folder>& parent, AcquiredPtr<Folder>& folder) {
    if (const auto found = folders.find(token); found != folders.end()) {
        folder = found->second;
        return true;
    }
    std::string name = token;
    const AcquiredPtr<Item> wanted(model(token));
    if (!Folder::settleFolderName(archive, *wanted, name, parent, folder))
        return false;
    if (!folder)
        folder = parent->acquireNewFolderFromName(name, false);
    folders.emplace(token, folder);
    if (added)
        added->containerAdd(*folder);
    return true;
}

} // namespace harbor6
