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

    /// Whether the memory is there. A process without it should end at once: where even this little is
    /// missing no exception can be raised.
    bool is_filled() const noexcept;

    /// Keeps the memory back again, if it was released and is available.
    static void refill() noexcept;
};

/// Reports that memory ran out, without using any.
void print_out_of_memory() noexcept;

} // namespace host
