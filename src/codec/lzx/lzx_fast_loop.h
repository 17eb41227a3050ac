#pragma once

#include "codec/lzx/lzx_token_lanes.h"

#include <cstdint>
#include <vector>

namespace algorithm::lzx {

/// The state that the two loops exchange in the middle of a verbatim or aligned offset block. It owns
/// nothing.
struct frame_state {
    std::uint8_t* window;
    std::uint32_t window_size;
    std::uint32_t position; ///< in the window
    std::uint32_t end;      ///< of the block or the frame, whichever comes first
    std::uint32_t offsets[3];
    const std::uint8_t* words; ///< the input; bit 0 is the highest one of the first word
    std::uint64_t next_bit;    ///< number of the next bit to decode
    /// Number of the first bit behind the data, a multiple of 16; token_lanes::lookahead_words words of zeros
    /// follow.
    std::uint64_t input_end;
};

/// Decodes verbatim and aligned offset blocks in the middle of a frame.
///
/// On entry the window position is 257 or more, so that no written byte has to be mirrored. The loop stops
/// before a main symbol: at the end of the input, or before a match that would pass the end of the block or
/// frame. The state is then what the exact loop would have there; the loop reports no failure, but leaves it
/// for the exact loop to find.
///
/// It decodes a piece of the frame in two passes, neither of which has many branches that are hard to
/// predict: token_lanes turns the bits into tokens, and then the tokens are executed.
///
/// One object serves one decoder, on its thread.
class fast_loop {
public:
    /// Writable bytes that must follow the window and its mirror.
    static constexpr std::uint32_t window_padding = 64;
    /// In blocks of fewer bytes, building the tables takes longer than they save.
    static constexpr std::uint32_t smallest_block = 1024;

    /// Sets the codes; to be called before the first run in each block. `codes.main_lengths` must stay valid
    /// and unchanged while run() is called, the rest is copied.
    void begin_block(const block_codes& codes);

    /// Decodes from `position` and `next_bit` on and updates both, and the offsets. Does nothing in a block
    /// without main symbols, or with an offset that is 0 or not below the window's size, as a raw block may
    /// set it. `scratch` is overwritten and grows to the number of bytes left to decode and 32 more.
    void run(frame_state& frame, std::vector<std::uint8_t>& scratch);

private:
    struct run_state;

    template<bool Aligned>
    void run_lanes(run_state& state);
    template<bool Aligned>
    void execute_lane(run_state& state, unsigned k, token_position first);
    template<bool Aligned>
    static token_position execute_tokens(run_state& state, const token_list& list, token_position first);
    static void copy_special(const run_state& state, std::uint8_t* to, std::uint32_t offset,
                             std::uint32_t length);

    token_lanes lanes;
    const std::uint8_t* literal_lengths = nullptr;
    bool usable = false;
    bool in_aligned = false;
};

} // namespace algorithm::lzx
