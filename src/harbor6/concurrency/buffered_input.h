#pragma once

#include "harbor6/stream/nio.h"

#include <memory>
#include <span>

namespace nio {

/// Reads ahead of its consumer, so that single bytes cost no call of the source. The source must be seekable
/// if the unconsumed bytes are to be given back (finish, or seek to an earlier place). One call reads the
/// source at most once; a short read means only that the source gave less, and bytes that the source
/// delivers after all are picked up by the next call.
class HARBOR6_API buffered_input final : public direct_input {
public:
    /// Reads `capacity` bytes ahead, at least 1; begins where `source` stands.
    buffered_input(input& source, unsigned capacity);
    ~buffered_input() override;

    /// Forgets what is buffered, without giving it back, and begins where the source stands now.
    void start() override;
    /// Gives the unconsumed bytes back by seeking the source. Raises nio::exception if the source refuses;
    /// can't fail when nothing is buffered.
    void finish() override;
    /// A request for half of the capacity or more goes past the buffer, straight into the target.
    unsigned read(char* target, unsigned length) override;
    /// Inline, because a bit reader lives on it.
    int get() override { return read_index < fill ? buffer[read_index++] : get_refilled(); }
    /// Renumbers the positions, the source's too.
    void set_tell(std::uint64_t value) override;
    /// The place of the next byte to be delivered.
    std::uint64_t tell() const override { return base + read_index; }
    /// Keeps the buffer only where nothing moves.
    bool seek(std::uint64_t value) override;
    void attach(input* source) override;

    /// The bytes that are buffered and not yet delivered; valid until the next call that isn't const.
    std::span<const unsigned char> ahead() const { return {buffer.get() + read_index, fill - read_index}; }
    /// Delivers `count` of them; at most ahead().size().
    void pass(std::size_t count) { read_index += static_cast<unsigned>(count); }

private:
    int get_refilled();
    void refill();
    void forget();
    unsigned deliver(char* target, unsigned length);

    std::unique_ptr<unsigned char[]> buffer;
    unsigned capacity;
    unsigned fill = 0;       ///< valid bytes in `buffer`
    unsigned read_index = 0; ///< next byte to deliver, at most `fill`
    std::uint64_t base;      ///< the source's position of the first byte in `buffer`
};

} // namespace nio
