#pragma once

#include <cstdint>
#include <exception>
#include <optional>

namespace host {

/// Counts the bytes of one file and knows whether they are all. Where nobody said how many there will be,
/// they are all unless a failure is on its way through the stack that wasn't there when the count began.
class segment_watch {
public:
    void expect(std::uint64_t size) { expected = size; }
    void add(std::uint64_t bytes) { count += bytes; }
    std::uint64_t counted() const { return count; }
    bool whole() const {
        return expected ? count == *expected : std::uncaught_exceptions() <= failures_around;
    }

private:
    std::optional<std::uint64_t> expected;
    std::uint64_t count = 0;
    int failures_around = std::uncaught_exceptions();
};

} // namespace host
