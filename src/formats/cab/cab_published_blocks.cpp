#include "formats/cab/cab_published_blocks.h"

#include "formats/cab/cab_constants.h"
#include "formats/cab/cab_published_rules.h"
#include "formats/cab/cab_volume.h"
#include "harbor6/groundwork/exception.h"

#include <algorithm>

namespace harbor6::cab {

namespace {

constexpr char reporter[] = "harbor6::cab::Archive";

} // namespace

void PayloadInput::show(std::string_view payload) {
    base += bytes.size();
    bytes = payload;
    next = 0;
}

bool PayloadInput::seek(std::uint64_t value) {
    if (value < base || value > size())
        return false;
    next = static_cast<std::size_t>(value - base);
    return true;
}

unsigned PayloadInput::_read(char* buffer, unsigned length) {
    const auto count = bytes.copy(buffer, length, next);
    next += count;
    return static_cast<unsigned>(count);
}

PublishedBlocks::PublishedBlocks(Volume& first, std::size_t folder, Owner served)
    : owner(std::move(served)), volume(&first), method(first.folders[folder].compression),
      left(first.folders[folder].block_count),
      spans(first.continues_out && folder + 1 == first.folders.size()) {
    block.reserve = first.folders[folder].reserve;
}

PublishedBlocks::~PublishedBlocks() {
    leave();
}

void PublishedBlocks::leave() {
    if (volume)
        volume->endData(left);
    volume = nullptr;
}

/// Goes on to the next volume. Returns false if the owner ends the folder.
bool PublishedBlocks::enterNext() {
    leave();
    volume = owner.move_on();
    if (!volume)
        return false;
    const auto* const folder = volume->continues_in ? &volume->folders.front() : nullptr;
    if (!folder || folder->compression != method)
        throw format::exception(folder ? "a folder goes on there with another compression method"
                                       : "a folder should go on there, but no file says so",
                                reporter);
    block.reserve = folder->reserve;
    left = folder->block_count;
    spans = volume->continues_out && volume->folders.size() == 1;
    return true;
}

/// Goes to the volume that holds the next block or piece. Returns false behind the last.
bool PublishedBlocks::findBlock(bool joining) {
    if (!volume)
        return false;
    while (left == 0) {
        if (!spans && joining)
            throw format::exception("the rest of a block is missing at the folder's end", reporter);
        if (!spans || !enterNext())
            return false;
    }
    return true;
}

/// Reads a block or a piece. Returns whether it is a piece that isn't the last.
bool PublishedBlocks::readPiece() {
    --left;
    reading = true;
    if (!block.read_published(*volume->input)) {
        owner.checksum_failed();
        damaged = true;
    }
    return ::format::cab::published::is_piece(block.uncompressed_size, spans && left == 0);
}

bool PublishedBlocks::next() {
    input.show({});
    joined.clear();
    damaged = reading = false;
    if (owner.has_enough(spans) || !findBlock(false))
        return false;
    bool whole = !readPiece();
    if (whole) {
        input.show({block.payload.get(), static_cast<std::size_t>(block.compressed_size)});
    } else {
        for (;;) {
            if (joined.size() + block.compressed_size > longest_payload)
                throw format::exception("the pieces of a block are too long together", reporter);
            joined.append(block.payload.get(), block.compressed_size);
            if (whole)
                break;
            if (!findBlock(true))
                return false;
            whole = !readPiece();
        }
        block.compressed_size = joined.size();
        input.show(joined);
    }
    if (damaged)
        owner.damaged((method & ::format::cab::compression::method_mask) == ::format::cab::compression::stored
                          ? block.compressed_size
                          : block.uncompressed_size);
    return true;
}

std::string_view PublishedBlocks::received() const {
    return joined.empty() && reading ? block_source::received() : std::string_view(joined);
}

} // namespace harbor6::cab
