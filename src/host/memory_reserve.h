#pragma once

namespace host {

/// Keeps some memory back for messages. The first allocation that fails releases it and raises
/// std::bad_alloc, so that the handler has memory to report it. One object per process, made in
/// main().
class memory_reserve {
public:
    memory_reserve();
    memory_reserve(const memory_reserve&) = delete;
    memory_reserve& operator=(const memory_reserve&) = delete;
    ~memory_reserve();

    /// Keeps the memory back again, if it was released and is available.
    static void refill() noexcept;
};

/// Reports that memory ran out, without using any.
void print_out_of_memory() noexcept;

} // namespace host
