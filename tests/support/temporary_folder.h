#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace support {

/// A new folder on disk, removed with this object.
class temporary_folder {
public:
    temporary_folder() {
        std::string name = (std::filesystem::temp_directory_path() / "harbor-test-XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw std::runtime_error("no temporary folder");
        path = name;
    }
    temporary_folder(const temporary_folder&) = delete;
    ~temporary_folder() {
        std::error_code dropped;
        std::filesystem::remove_all(path, dropped);
    }

    std::filesystem::path operator/(const std::string& name) const { return path / name; }

    std::filesystem::path path;
};

inline void write_file(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

/// The file's bytes; "(none)" if it can't be read.
inline std::string read_file(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return file ? std::string(std::istreambuf_iterator<char>(file), {}) : "(none)";
}

/// Paths below `folder`, sorted, each followed by a blank; folders end in '/'.
inline std::string tree(const std::filesystem::path& folder) {
    std::string text;
    std::vector<std::string> paths;
    if (std::filesystem::exists(folder))
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
            paths.push_back(
                entry.path().lexically_relative(folder).string() +
                (entry.symlink_status().type() == std::filesystem::file_type::directory ? "/" : ""));
    std::sort(paths.begin(), paths.end());
    for (const auto& path : paths)
        text += path + ' ';
    return text;
}

} // namespace support
