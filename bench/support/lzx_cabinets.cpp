#include "support/lzx_cabinets.h"

#include "support/lzx_compress.h"
#include "support/lzx_decode.h"
#include "support/yardstick.h"

#include <cstdlib>
#include <filesystem>

namespace yardstick {

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
    support::lzx_write_cabinet(part, kind, 21, frames);
    fs::rename(part, path);
    return path;
}

} // namespace yardstick
