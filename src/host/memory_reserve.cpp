#include "host/memory_reserve.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace host {

namespace {

/// Enough for a few lines with the longest paths, and small enough to be part of the heap, not a mapping of
/// its own: what is released is of use at once.
constexpr std::size_t reserve_size = 96 * 1024;

std::atomic<void*> reserve{nullptr};

void release_reserve() {
    std::free(reserve.exchange(nullptr));
    throw std::bad_alloc();
}

} // namespace

memory_reserve::memory_reserve() {
    refill();
    std::set_new_handler(release_reserve);
}

memory_reserve::~memory_reserve() {
    std::set_new_handler(nullptr);
    std::free(reserve.exchange(nullptr));
}

bool memory_reserve::is_filled() const noexcept {
    return reserve != nullptr;
}

void memory_reserve::refill() noexcept {
    if (!reserve)
        reserve = std::malloc(reserve_size);
}

void print_out_of_memory() noexcept {
    std::fputs("harbor: out of memory\n", stderr);
}

} // namespace host
