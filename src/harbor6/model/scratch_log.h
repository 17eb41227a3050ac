#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

namespace harbor6 {

/// A growing sequence of bytes, written at its end and read anywhere. The first 16 MiB are kept in memory,
/// the rest in an unnamed temporary file, whose failures raise fs::Exception. Used by one thread at a time.
class ScratchLog {
public:
    static constexpr std::uint64_t memory_limit = 16u << 20;

    std::uint64_t size() const;
    void append(const char* bytes, unsigned length);
    /// Reads up to `length` bytes from `offset` on and returns how many; fewer only at the end.
    unsigned read(std::uint64_t offset, char* buffer, unsigned length) const;

private:
    static constexpr unsigned piece_size = 1u << 20;

    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    std::FILE* fileAt(std::uint64_t offset) const;

    std::vector<std::vector<char>> pieces; ///< each but the last one is full
    std::unique_ptr<std::FILE, Close> overflow;
    std::uint64_t length = 0;
};

} // namespace harbor6
