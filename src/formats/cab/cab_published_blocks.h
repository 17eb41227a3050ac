#pragma once

#include "formats/cab/cab_blocks.h"
#include "harbor6/stream/random.h"

#include <exception>
#include <functional>
#include <string>

namespace harbor6::cab {

class Volume;

/// Delivers the payload of one block after another from memory, and can step back in it. Owns nothing; what
/// it shows must stay until it shows something else. Positions count on from block to block.
class PayloadInput : public stream::random::input {
public:
    using stream::random::input::read;

    void show(std::string_view payload);

    bool seek(std::uint64_t value) override;
    std::uint64_t size() const override { return base + bytes.size(); }

protected:
    unsigned _read(char* buffer, unsigned length) override;
    int _read() override { return next < bytes.size() ? static_cast<unsigned char>(bytes[next++]) : -1; }
    std::uint64_t _tell() const override { return base + next; }

private:
    std::string_view bytes;
    std::size_t next = 0;
    std::uint64_t base = 0;
};

/// The blocks of one cabinet folder by the published rules. The folder may go on in further volumes, and a
/// block may come in pieces, each in a volume of its own, of which only the whole is delivered. A block that
/// ends before its stated payload does leaves the next one where it is.
class PublishedBlocks : public ::format::cab::block_source {
public:
    /// What the owner does for the folder.
    struct Owner {
        /// Whether no more of the folder is needed, given whether it goes on in the next volume.
        std::function<bool(bool spans)> has_enough;
        /// The volume behind the present one, positioned on the data of its folder 0. Null ends the folder.
        /// The present one may be destroyed.
        std::function<Volume*()> move_on;
        /// The checksum of a block or of a piece is wrong. Raises if such a block can't be used.
        std::function<void()> checksum_failed;
        /// Called for a block with a wrong checksum before it is delivered: so many of the bytes that follow
        /// in the folder may be wrong. That is all of them if later blocks depend on it.
        std::function<void(std::uint64_t size)> damaged;
    };
    /// A block can't be longer.
    static constexpr std::size_t longest_payload = 65535;
    static constexpr std::uint64_t to_the_end = ~std::uint64_t{0} >> 1;

    /// `volume` is positioned on the data of the folder.
    PublishedBlocks(Volume& volume, std::size_t folder, Owner owner);
    ~PublishedBlocks() override;

    bool next() override;
    stream::input& payload() override { return input; }
    std::string_view received() const override;

private:
    bool findBlock(bool joining);
    bool joinPieces();
    bool readPiece();
    bool enterNext();
    void leave();

    Owner owner;
    Volume* volume; ///< null while the owner moves on
    const std::uint16_t method;
    const bool is_stored;
    std::uint32_t left = 0;     ///< blocks of the folder in `volume`
    bool spans = false;         ///< the folder goes on in the next volume
    bool damaged = false;       ///< the checksum of a piece of this block is wrong
    bool reading = false;       ///< `block` is one that was not delivered yet
    std::string joined;         ///< pieces of a block
    std::exception_ptr failure; ///< to be raised by next(), which has delivered what came before it
    PayloadInput input;
};

} // namespace harbor6::cab
