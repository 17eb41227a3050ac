#include "harbor6/model/scratch_log.h"

#include "harbor6/groundwork/exception.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace harbor6 {

namespace {

[[noreturn]] void failed(const char* doing) {
    throw fs::Exception(std::string("cannot ") + doing + " the scratch file: " + std::strerror(errno),
                        "harbor6::ScratchLog");
}

} // namespace

std::uint64_t ScratchLog::size() const {
    return length;
}

void ScratchLog::append(const char* bytes, unsigned count) {
    const auto inside =
        static_cast<unsigned>(std::min<std::uint64_t>(count, memory_limit - std::min(length, memory_limit)));
    for (unsigned done = 0; done < inside;) {
        if (pieces.empty() || pieces.back().size() == piece_size)
            pieces.emplace_back();
        auto& piece = pieces.back();
        const auto room = std::min(inside - done, piece_size - static_cast<unsigned>(piece.size()));
        piece.insert(piece.end(), bytes + done, bytes + done + room);
        done += room;
        length += room;
    }
    if (inside == count)
        return;
    if (!overflow) {
        overflow.reset(std::tmpfile());
        if (!overflow)
            failed("make");
    }
    if (std::fwrite(bytes + inside, 1, count - inside, fileAt(length)) != count - inside)
        failed("write");
    length += count - inside;
}

unsigned ScratchLog::read(std::uint64_t offset, char* buffer, unsigned count) const {
    count = static_cast<unsigned>(std::min<std::uint64_t>(count, length - std::min(offset, length)));
    unsigned done = 0;
    while (done < count && offset < memory_limit) {
        const auto& piece = pieces[offset / piece_size];
        const auto within = static_cast<unsigned>(offset % piece_size);
        const auto taken = std::min(count - done, static_cast<unsigned>(piece.size()) - within);
        std::copy_n(piece.data() + within, taken, buffer + done);
        done += taken;
        offset += taken;
    }
    if (done < count && std::fread(buffer + done, 1, count - done, fileAt(offset)) != count - done)
        failed("read");
    return count;
}

/// The file, positioned at the byte at `offset` of the log.
std::FILE* ScratchLog::fileAt(std::uint64_t offset) const {
    if (std::fseek(overflow.get(), static_cast<long>(offset - memory_limit), SEEK_SET) != 0)
        failed("read");
    return overflow.get();
}

} // namespace harbor6
