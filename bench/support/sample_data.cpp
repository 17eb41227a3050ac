#include "support/sample_data.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>
#include <stdexcept>
#include <vector>

namespace sample_data {

namespace {

namespace fs = std::filesystem;

template<class Accept>
std::string gather(std::initializer_list<const char*> roots, std::size_t size, Accept accept) {
    std::vector<fs::path> files;
    for (const char* root : roots) {
        const auto options = fs::directory_options::skip_permission_denied;
        for (const auto& entry : fs::recursive_directory_iterator(root, options))
            if (entry.is_regular_file() && !entry.is_symlink() && accept(entry.path()))
                files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    // Packages hold many copies of the same file, of which one would be expanded in no time.
    std::set<std::size_t> seen;
    std::string bytes;
    for (const auto& file : files) {
        if (bytes.size() >= size)
            break;
        const auto more = file_bytes(file);
        if (seen.insert(std::hash<std::string>{}(more)).second)
            bytes += more;
    }
    if (bytes.empty())
        throw std::runtime_error("this machine has no files to make a benchmark's input of");
    while (bytes.size() < size)
        bytes.append(bytes, 0, size - bytes.size());
    bytes.resize(size);
    return bytes;
}

} // namespace

std::string file_bytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in)
        throw std::runtime_error("cannot read " + path);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::string source_text(std::size_t size) {
    static const std::set<std::string> suffixes{".c",  ".cc", ".cpp", ".h",  ".hpp", ".js",
                                                ".pl", ".pm", ".py",  ".sh", ".tcc"};
    return gather({"/usr/include", "/usr/lib", "/usr/share"}, size,
                  [](const fs::path& path) { return suffixes.contains(path.extension()); });
}

std::string programs(std::size_t size) {
    return gather({"/usr/bin", "/usr/lib"}, size, [](const fs::path& path) {
        std::ifstream in(path, std::ios::binary);
        char magic[4] = {};
        return in.read(magic, 4) && std::string(magic, 4) == "\x7f"
                                                             "ELF";
    });
}

} // namespace sample_data
