#pragma once

#include "harbor6/groundwork/export.h"
#include "harbor6/stream/input.h"

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace format {
class classifier;
}

namespace harbor6 {

class Classifier;
class Format;

/// An archive inside a stream of other bytes.
struct FoundArchive {
    static constexpr std::uint64_t unknown_size = ~std::uint64_t{0}; ///< only the data's end tells it

    Format* format = nullptr; ///< owned by the registry
    std::uint64_t offset = 0; ///< of its first byte
    std::uint64_t size = 0;   ///< in bytes as the archive states it, or unknown_size
    bool cut = false;         ///< the stream ends inside it
};

/// Finds the archives of all registered formats anywhere inside a stream, in one pass. Memory is constant,
/// and the time grows with the stream's length alone: where data holds very many heads of archives, those
/// that would cost too much to measure are passed over, and passedOver() tells that. A format that states its
/// first bytes is found fast.
///
/// It owns neither the registry nor the stream; both outlive it, and are not used otherwise between the
/// calls of next(), but the stream may be if it can seek. The registry must not get new formats meanwhile.
/// One thread at a time. What the stream raises passes through.
class HARBOR6_API ArchiveFinder {
public:
    /// Bytes from an offset on that a recogniser is shown.
    static constexpr unsigned sample_size = 4096;

    /// Searches `source` from its current position to its end. Offsets are positions of `source`.
    ArchiveFinder(const Classifier& formats, stream::input& source);
    ~ArchiveFinder();
    ArchiveFinder(const ArchiveFinder&) = delete;
    ArchiveFinder& operator=(const ArchiveFinder&) = delete;

    /// Finds the next archive; false if there is none. The search goes on behind an archive, so that those
    /// inside it are not found, and one byte further if the archive is cut or its size unknown. A stream that
    /// cannot seek has been read to the end when an archive in it is cut.
    bool next(FoundArchive& found);
    /// Whether next() passed over something that may be an archive, because too much looks like archives.
    bool passedOver() const { return untested; }

private:
    struct Search;
    class View;

    void refill();
    std::size_t find(const Search& search, std::size_t from) const;
    bool test(const Search& search, FoundArchive& found);
    void pass(FoundArchive& found);

    stream::input& source;
    std::vector<Search> searches; ///< by format
    std::unique_ptr<char[]> window;
    std::uint64_t base;      ///< position of the window's first byte
    std::size_t length = 0;  ///< bytes in the window
    std::size_t place = 0;   ///< in the window: where the search goes on
    bool at_end = false;     ///< the window ends with the stream
    std::uint64_t allowance; ///< bytes that may still be read to measure archives
    bool moved = false;      ///< `source` isn't at the window's end
    bool untested = false;   ///< something that begins as an archive was not measured
};

} // namespace harbor6
