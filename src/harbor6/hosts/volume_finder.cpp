#include "harbor6/hosts/volume_finder.h"

#include "harbor6/groundwork/exception.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace host {

namespace {

namespace files = std::filesystem;

std::string last_component(const std::string& path) {
    return path.substr(path.find_last_of("/\\") + 1);
}

bool same_letters(const std::string& a, const std::string& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](unsigned char one, unsigned char other) {
        return std::tolower(one) == std::tolower(other);
    });
}

harbor6::data::CountedInput open(const std::string& path) {
    auto file = path == "-" ? open_standard_input() : open_input(path);
    return harbor6::data::CountedInput(std::make_unique<file_input>(std::move(file), path));
}

bool is_plain(const std::string& path) {
    std::error_code ignored;
    return files::is_regular_file(path, ignored);
}

bool is_same(const std::string& a, const std::string& b) {
    std::error_code ignored;
    return a == b || files::equivalent(a, b, ignored);
}

} // namespace

VolumeFinder::VolumeFinder(std::vector<std::string> named) {
    for (auto& path : named)
        candidates.push_back({std::move(path), {}});
}

VolumeFinder::~VolumeFinder() = default;

void VolumeFinder::beginArchive(const std::string& path) {
    at_hand = path;
}

/// Whether `file` is the volume; `bytes` is then at its start.
bool VolumeFinder::tryOpen(candidate& file, const harbor6::VolumeRequest& request,
                           harbor6::data::CountedInput& bytes) {
    try {
        bytes = file.pipe ? file.pipe : open(file.path);
        if (!is_plain(file.path))
            file.pipe = bytes;
        // A pipe may have been opened to look at its first bytes.
        const bool right = bytes->seek(0) && request.matches(*bytes);
        return bytes->seek(0) && right;
    } catch (const un::exception&) {
        return false;
    }
}

/// The path of a file of that name beside the archive at hand, empty if there is none.
std::string VolumeFinder::findBeside(const std::string& name) const {
    if (name.empty() || name == "." || name == ".." || at_hand == "-")
        return {};
    const auto folder = files::path(at_hand).parent_path();
    auto found = (folder / name).string();
    if (is_plain(found))
        return found;
    found.clear();
    std::error_code error;
    const auto searched = folder.empty() ? files::path(".") : folder;
    for (files::directory_iterator entry(searched, error), end; !error && entry != end;
         entry.increment(error)) {
        const auto other = entry->path().filename().string();
        const auto path = (folder / other).string();
        if (same_letters(other, name) && (found.empty() || path < found) && is_plain(path))
            found = path;
    }
    return found;
}

harbor6::data::CountedInput VolumeFinder::openVolume(const harbor6::VolumeRequest& request) {
    const auto name = last_component(request.name);
    harbor6::data::CountedInput bytes;
    const auto try_named = [&](bool same_name) {
        for (auto& file : candidates)
            if (same_letters(last_component(file.path), name) == same_name && !is_same(file.path, at_hand) &&
                tryOpen(file, request, bytes)) {
                used.insert(file.path);
                return true;
            }
        return false;
    };
    candidate beside{findBeside(name), {}};
    // The number of a set is often that of others too, so the name decides first.
    if (try_named(true) || (!beside.path.empty() && tryOpen(beside, request, bytes)) || try_named(false))
        return bytes;
    for (const auto& file : candidates)
        if (beside.path.empty() && same_letters(last_component(file.path), name) && is_plain(file.path))
            beside.path = file.path;
    try {
        return beside.path.empty() ? harbor6::data::CountedInput() : open(beside.path);
    } catch (const fs::Exception&) {
        return {};
    }
}

} // namespace host
