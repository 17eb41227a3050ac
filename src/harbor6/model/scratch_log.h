#pragma once

#include "harbor6/groundwork/platform.h"
#include "harbor6/model/scratch_space.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace harbor6 {

/// A growing sequence of bytes, written at its end and read anywhere. They are kept in memory as long as the
/// space has memory left; those that follow in a temporary file, whose failures raise fs::Exception. The
/// space must outlive it. Used by one thread at a time.
class ScratchLog {
public:
    explicit ScratchLog(ScratchSpace& space);
    ScratchLog(const ScratchLog&) = delete;
    ScratchLog& operator=(const ScratchLog&) = delete;
    ~ScratchLog();

    std::uint64_t size() const;
    void append(const char* bytes, unsigned length);
    /// Reads up to `length` bytes from `offset` on and returns how many; fewer only at the end.
    unsigned read(std::uint64_t offset, char* buffer, unsigned length) const;

private:
    static constexpr unsigned piece_size = 64u << 10;

    unsigned appendToMemory(const char* bytes, unsigned length);
    bool addPiece();
    std::uint64_t memorySize() const { return pieces.size() * std::uint64_t{piece_size}; }

    ScratchSpace& space;
    std::vector<std::vector<char>> pieces; ///< each but the last one is full, that too once there is a file
    std::optional<platform::temporary_file> file; ///< the bytes behind those of `pieces`
    std::uint64_t length = 0;
};

} // namespace harbor6
