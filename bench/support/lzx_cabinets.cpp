#include "support/lzx_cabinets.h"

#include "support/lzx_compress.h"
#include "support/sample_data.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace sample_data {

namespace {

std::uint32_t little(const std::string& bytes, std::size_t at, unsigned size) {
    if (at + size > bytes.size())
        throw std::runtime_error("cabinet cut short");
    std::uint32_t value = 0;
    for (unsigned i = 0; i < size; ++i)
        value |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[at + i])) << (8 * i);
    return value;
}

void append(std::string& bytes, std::uint64_t value, unsigned size) {
    for (unsigned i = 0; i < size; ++i)
        bytes += static_cast<char>(value >> (8 * i));
}

void lzx_write_cabinet(const std::string& path, const std::string& name, unsigned window_bits,
                       const std::vector<support::lzx_frame>& frames) {
    std::uint64_t size = 36 + 8 + 16 + name.size() + 1;
    const std::uint64_t data = size;
    std::uint32_t content = 0;
    for (const auto& frame : frames) {
        size += 8 + frame.bytes.size();
        content += frame.size;
    }
    std::string head = "MSCF";
    for (const std::uint64_t value :
         {std::uint64_t{0}, size, std::uint64_t{0}, std::uint64_t{36 + 8}, std::uint64_t{0}})
        append(head, value, 4);
    for (const unsigned value : {0x0103u, 1u, 1u, 0u, 0u, 0u})
        append(head, value, 2);
    append(head, data, 4);
    append(head, frames.size(), 2);
    append(head, 3 | window_bits << 8, 2);
    append(head, content, 4);
    append(head, 0, 4);
    for (const unsigned value : {0u, 0x305Du, 0x6CB5u, 0x20u})
        append(head, value, 2);
    head += name + '\0';
    std::ofstream out(path, std::ios::binary);
    out << head;
    for (const auto& frame : frames) {
        std::string record;
        append(record, 0, 4);
        append(record, frame.bytes.size(), 2);
        append(record, frame.size, 2);
        out << record << frame.bytes;
    }
    if (!out.flush())
        throw std::runtime_error("cannot write " + path);
}

} // namespace

std::string lzx_cabinet(const std::string& kind) {
    namespace fs = std::filesystem;
    const char* named = std::getenv("HARBOR_BENCH_CACHE");
    const fs::path folder = named != nullptr ? fs::path(named) : fs::temp_directory_path() / "harbor-bench";
    const fs::path path = folder / (kind + "-lzx21.cab");
    if (fs::exists(path))
        return path;
    fs::create_directories(folder);
    constexpr std::size_t size = 100'000'000;
    const bool text = kind == "text";
    const auto frames = support::lzx_compress(text ? source_text(size) : programs(size),
                                              {.window_bits = 21,
                                               .block_bytes = 128 * 1024,
                                               .chain = 24,
                                               .translation_size = text ? 0u : 12'000'000u});
    // Under another name until it is whole.
    const fs::path part = path.string() + ".part";
    lzx_write_cabinet(part, kind, 21, frames);
    fs::rename(part, path);
    return path;
}

lzx_content lzx_read_cabinet(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), {}};
    lzx_content cabinet;
    const auto folder_count = little(bytes, 26, 2);
    for (std::size_t i = 0; i < folder_count; ++i) {
        const std::size_t record = 36 + 8 * i;
        lzx_content::folder folder{little(bytes, record + 7, 1), {}};
        std::size_t at = little(bytes, record, 4);
        for (auto blocks = little(bytes, record + 4, 2); blocks > 0; --blocks) {
            const auto size = little(bytes, at + 4, 2);
            folder.frames.push_back({bytes.substr(at + 8, size), little(bytes, at + 6, 2)});
            at += 8 + size;
        }
        cabinet.folders.push_back(std::move(folder));
    }
    std::size_t at = little(bytes, 16, 4);
    for (auto count = little(bytes, 28, 2); count > 0; --count) {
        const char* name = bytes.c_str() + at + 16;
        cabinet.files.push_back(
            {name, little(bytes, at, 4), little(bytes, at + 4, 4), little(bytes, at + 8, 2)});
        at += 16 + cabinet.files.back().name.size() + 1;
    }
    return cabinet;
}

} // namespace sample_data
