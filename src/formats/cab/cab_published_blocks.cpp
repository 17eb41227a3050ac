#include "formats/cab/cab_published_blocks.h"

#include "formats/cab/cab_constants.h"
#include "formats/cab/cab_published_rules.h"
#include "formats/cab/cab_volume.h"
#include "harbor6/groundwork/exception.h"

#include <algorithm>
#include <utility>

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
      is_stored((method & ::format::cab::compression::method_mask) == ::format::cab::compression::stored),
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
    if (volume->records_cut && !volume->continues_in)
        throw volume->cutShort(); // it can't be known whether the folder goes on
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

/// Joins the pieces of a block, of which the first was read. Returns false if the owner ends the folder.
bool PublishedBlocks::joinPieces() {
    for (bool whole = false;;) {
        if (joined.size() + block.compressed_size > longest_payload)
            throw format::exception("the pieces of a block are too long together", reporter);
        joined.append(block.payload.get(), block.compressed_size);
        if (whole)
            return true;
        try {
            if (!findBlock(true))
                return false;
            whole = !readPiece();
        } catch (...) {
            if (!is_stored)
                throw;
            failure = std::current_exception(); // no decoder needs the rest
            return true;
        }
    }
}

bool PublishedBlocks::next() {
    if (failure)
        std::rethrow_exception(std::exchange(failure, nullptr));
    input.show({});
    joined.clear();
    damaged = reading = false;
    if (owner.has_enough(spans) || !findBlock(false))
        return false;
    if (!readPiece()) {
        input.show({block.payload.get(), static_cast<std::size_t>(block.compressed_size)});
    } else if (joinPieces()) {
        block.compressed_size = joined.size();
        input.show(joined);
    } else {
        return false;
    }
    if (damaged)
        owner.damaged(is_stored ? block.compressed_size : to_the_end);
    return true;
}

std::string_view PublishedBlocks::received() const {
    // A wrong size makes what follows a block look like its payload.
    const bool trusted =
        reading && block.stored_checksum == 0 && block.compressed_size == block.uncompressed_size;
    return trusted ? block_source::received() : std::string_view();
}

} // namespace harbor6::cab
