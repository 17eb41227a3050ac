#pragma once

#include <string>

namespace yardstick {

/// The path of a cabinet with one LZX folder, window 21, of 100 MB of source text ("text") or programs
/// ("programs", calls translated). Made at the first call, which takes minutes, and kept in the folder that
/// HARBOR_BENCH_CACHE names, or in one beside the system's temporary files.
std::string lzx_cabinet(const std::string& kind);

} // namespace yardstick
