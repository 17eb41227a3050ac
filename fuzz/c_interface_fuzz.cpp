// Any bytes as an archive through the C interface, alone and as a part of a set: every call returns, entries
// arrive within the sizes that were told, and what is read one by one is what one pass gives.

#include "harbor6/c.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>

namespace {

constexpr std::uint64_t most = 1u << 20;

struct pass {
    std::map<size_t, std::string> bytes;
    std::map<size_t, bool> complete;
    std::uint64_t total = 0;
};

int take(void* context, size_t entry, const void* bytes, size_t length) {
    auto& all = *static_cast<pass*>(context);
    all.total += length;
    all.bytes[entry].append(static_cast<const char*>(bytes), length);
    return all.total > most;
}

void end(void* context, size_t entry, int complete) {
    static_cast<pass*>(context)->complete[entry] = complete != 0;
}

void compare(harbor6_archive* archive, size_t entry, const std::string& expected) {
    harbor6_stream* stream = nullptr;
    if (harbor6_open_entry(archive, entry, most, &stream) != HARBOR6_OK ||
        harbor6_stream_size(stream) != expected.size())
        std::abort();
    std::string found(expected.size(), '\0');
    if (harbor6_stream_read(stream, found.data(), found.size()) != static_cast<int64_t>(found.size()) ||
        found != expected)
        std::abort();
    harbor6_stream_close(stream);
}

int supply(void* context, uint64_t offset, void* buffer, size_t length, size_t* came) {
    const auto& bytes = *static_cast<const std::string_view*>(context);
    *came = offset < bytes.size() ? bytes.copy(static_cast<char*>(buffer), length, offset) : 0;
    return 0;
}

/// Reads the archive in one pass, and a few of its entries one by one.
void read(harbor6_archive* archive) {
    pass all;
    const harbor6_receiver receiver = {&all, nullptr, take, end};
    harbor6_read(archive, &receiver);
    unsigned compared = 0;
    for (const auto& [entry, complete] : all.complete) {
        if (entry >= harbor6_count(archive))
            std::abort();
        if (complete && ++compared < 5)
            compare(archive, entry, all.bytes[entry]);
    }
    if (harbor6_error(archive) == nullptr)
        std::abort();
    harbor6_close(archive);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static harbor6_formats* const formats = [] {
        auto* const made = harbor6_formats_new();
        if (harbor6_formats_load(made, nullptr) != HARBOR6_OK)
            std::abort();
        return made;
    }();
    harbor6_archive* archive = nullptr;
    harbor6_open_memory(formats, data, size, &archive);
    read(archive);

    // In two, at the last place where a cabinet may begin.
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto middle = std::min(bytes.rfind("MSCF"), size);
    std::string_view halves[] = {bytes.substr(0, middle), bytes.substr(middle)};
    harbor6_part parts[2] = {};
    for (int i = 0; i < 2; ++i)
        parts[i].source = {&halves[i], halves[i].size(), supply};
    harbor6_open_parts(formats, parts, 2, &archive);
    harbor6_ignore_checksums(archive, 1);
    read(archive);
    return 0;
}
