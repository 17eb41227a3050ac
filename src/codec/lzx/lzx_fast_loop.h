#pragma once

#include "codec/lzx/lzx_token_lanes.h"

#include <cstdint>
#include <vector>

namespace algorithm::lzx {

/// What the fast loop takes over and hands back: where a frame stands in the middle of a block with trees.
struct frame_state {
    std::uint8_t* window;
    std::uint32_t window_size;
    std::uint32_t position; ///< in the window
    std::uint32_t end;      ///< of the block or the frame, whichever comes first
    std::uint32_t offsets[3];
    const std::uint8_t* words; ///< the input; bit 0 is the highest one of the first word
    std::uint64_t next_bit;    ///< its number
    /// Number of the first bit behind the data, a whole word; token_lanes::further_words of zeros follow.
    std::uint64_t input_end;
};

/// Decodes verbatim and aligned offset blocks in the middle of a frame.
///
/// On entry the window position is 257 or more, so that nothing written has to be mirrored. The loop ends,
/// before a main symbol, where the input ends, and in front of a match that would pass the end. Everything is
/// then what the exact loop would have there; a failure is left for that loop to find.
///
/// It goes over a piece of the frame in two passes, neither of which has many branches that are hard to
/// predict: token_lanes makes tokens of the bits, and then they are carried out.
class fast_loop {
public:
    /// Bytes of room that are needed behind the window and its mirror.
    static constexpr std::uint32_t overhang = 64;
    /// Blocks below this size are not worth their tables.
    static constexpr std::uint32_t worthwhile_block = 1024;

    /// Comes before the first run in each block. `main_lengths` are still read by run(), the rest is copied.
    void begin_block(const block_codes& codes);

    /// Decodes from `position` and `next_bit` on and moves both, and the offsets. Does nothing in a block
    /// without main symbols, or with an offset that is 0 or not below the window's size: a raw block may set
    /// any. `scratch` is overwritten and grows to what is decoded and 32 bytes.
    void run(frame_state& frame, std::vector<std::uint8_t>& scratch);

private:
    struct run_state;

    template<bool Aligned>
    void run_lanes(run_state& state);
    template<bool Aligned>
    void carry_out_lane(run_state& state, unsigned k, token_place first);
    template<bool Aligned>
    static token_place carry_out_tokens(run_state& state, const token_list& list, token_place first);
    static void copy_unusual(const run_state& state, std::uint8_t* to, std::uint32_t offset,
                             std::uint32_t length);

    token_lanes lanes;
    const std::uint8_t* literal_lengths = nullptr;
    bool usable = false;
    bool in_aligned = false;
};

} // namespace algorithm::lzx
