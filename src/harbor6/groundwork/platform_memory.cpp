#include "harbor6/groundwork/platform_memory.h"

#include <cstdint>
#include <sys/mman.h>

namespace platform {

void expect_writes(void* buffer, std::size_t length) noexcept {
#ifdef MADV_HUGEPAGE
    constexpr std::uintptr_t page = 2 * 1024 * 1024;
    const auto begin = reinterpret_cast<std::uintptr_t>(buffer);
    const auto first = (begin + page - 1) / page * page;
    const auto end = (begin + length) / page * page;
    if (first < end)
        madvise(reinterpret_cast<void*>(first), end - first,
                MADV_HUGEPAGE); // a hint: failing changes nothing
#endif
}

} // namespace platform
