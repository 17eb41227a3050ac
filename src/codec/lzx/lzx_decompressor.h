#pragma once

#include "codec/lzx/lzx_tables.h"
#include "harbor6/stream/transform.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace algorithm::lzx {

class fast_loop;

/// Expands the LZX frames of one cabinet folder, in order: the window, the repeated offsets, the code
/// lengths, the current block and the translation of CALL operands continue from frame to frame. One object
/// serves one folder at a time, on one thread, and must not be used after a frame has failed or raised until
/// restart(). It owns its buffers: the window and up to 200 KiB beside it.
///
/// There are two decoding loops. The exact loop defines the result for every input, good or bad. The fast
/// loop (class fast_loop) decodes the middle of a frame and stops in the state that the exact loop would have
/// there, so that no result depends on which of the two ran.
///
/// process() is not supported: call process_block().
class decompressor : public stream::transform {
public:
    /// `window_size` bytes of history, a power of two up to 2 MiB. Any other size raises algorithm::exception
    /// "Invalid compression window size".
    explicit decompressor(std::uint32_t window_size);
    ~decompressor() override;

    /// Reads one frame of `compressed_size` bytes from `input`, writes its `uncompressed_size` bytes to
    /// `output` in one write, and returns their number. Returns -1, with nothing written, if the frame
    /// doesn't decode to exactly that many bytes or doesn't fit the rest of the window. All bytes of the
    /// frame are read even if it fails. If `input` ends early, the missing bytes are taken as zeros. Sizes
    /// are used modulo 2 to the power 32. Exceptions of the streams pass through.
    std::int64_t process_block(stream::input& input, stream::output& output, std::uint64_t compressed_size,
                               std::uint64_t uncompressed_size);

    /// Makes the object as after construction, for another folder. Of the window only what was written is
    /// cleared, so that a small folder costs little.
    void restart();
    std::uint32_t size_of_window() const { return window_size; }

    /// Decodes as the published format has it where that differs: an operand of minus its position is
    /// translated, translation ends after 32768 frames, and the pad byte of an odd raw block that ends with
    /// its frame may be in that frame. To be called before the first frame.
    void use_published_rules() { published_rules = true; }
    /// Turns the fast loop off, for tests and fuzzing; the results are the same.
    void use_exact_loop_only() { exact_only = true; }

private:
    void load_frame(stream::input& input, std::uint32_t size);
    bool decode_frame(std::uint32_t want);
    void finish_frame(stream::output& output, std::uint32_t produced);

    bool start_block();
    bool read_aligned_tree();
    bool read_trees();
    void build_tables();
    bool read_lengths(std::uint8_t* lengths, const std::uint8_t* previous, unsigned count);
    bool read_raw_header();

    bool decode_raw(std::uint32_t amount);
    bool decode_tree_block(std::uint32_t amount);
    template<bool Mirrored>
    bool decode_exactly(std::uint32_t stop, std::uint32_t end);
    template<bool Mirrored>
    void copy_match(std::uint32_t offset, std::uint32_t length);
    std::uint32_t read_offset(unsigned slot);
    std::uint32_t use_offset(unsigned slot);

    void decode_fast(std::uint32_t end);

    void start_bits();
    void load_word();
    void consume(unsigned count);
    void consume_checked(unsigned count);
    std::uint32_t peek(unsigned count) const { return count == 0 ? 0 : bit_buffer >> (32 - count); }
    std::uint32_t read_checked(unsigned count);
    unsigned look_up(const std::int16_t* table, const tree_links* links, unsigned bits) const;

    // Sizes of the arrays of code lengths: two slots more than the largest window has, and the length symbols
    // rounded up to whole words. Nothing uses the rest.
    static constexpr unsigned main_room = literal_symbols + headers_per_slot * (maximum_slots + 2);
    static constexpr unsigned length_room = (length_symbols + 3) / 4 * 4;

    enum state : std::uint32_t {
        at_header = 1, ///< a block header follows
        in_block = 2   ///< bytes of the current block follow
    };

    std::unique_ptr<std::uint8_t[]> window; ///< with a mirror of its first 257 bytes behind its end
    std::uint32_t window_size;
    std::uint32_t window_mask;
    std::uint32_t R0 = 1;
    std::uint32_t R1 = 1;
    std::uint32_t R2 = 1;
    std::int16_t main_table[1 << main_table_bits] = {};
    std::int16_t length_table[1 << length_table_bits] = {};
    std::uint8_t main_lengths[main_room] = {};
    std::uint8_t length_lengths[length_room] = {};
    std::uint8_t aligned_table[1 << aligned_table_bits] = {};
    std::uint8_t aligned_lengths[aligned_symbols] = {};
    tree_links main_links[2 * main_room] = {};
    tree_links length_links[2 * length_symbols] = {};
    std::vector<std::uint8_t> input_buffer; ///< this frame's compressed bytes, then zeros
    const std::uint8_t* input_position = nullptr;
    const std::uint8_t* input_limit = nullptr; ///< 4 bytes behind the last compressed byte
    /// The fast loop's scratch memory, then the frame while its calls are translated.
    std::vector<std::uint8_t> output_buffer;
    std::uint8_t previous_main_lengths[main_room] = {};
    std::uint8_t previous_length_lengths[length_room] = {};
    std::uint32_t bit_buffer = 0; ///< the next 16 + bits_left bits, at the top
    std::int8_t bits_left = 0;
    std::uint8_t position_slots = 0;
    bool needs_translation_header = true;
    bool input_overrun = false; ///< a header or length list ran past the frame, which therefore fails
    std::uint32_t window_position = 0;
    std::uint32_t window_used = 0;      ///< bytes from its start that may not be zeros
    std::uint32_t translation_size = 0; ///< 0: no translation
    std::uint32_t instruction_position = 0;
    std::uint32_t block_size = 0;
    std::int32_t block_remaining = 0;
    std::uint32_t block_type = 0; ///< of the current or the last block; 0 before the first
    std::uint32_t decoder_state = at_header;

    bool tables_ready = false; ///< main_table and length_table are those of the current block
    bool exact_only = false;
    bool published_rules = false;
    bool pad_byte_read = false;      ///< of the raw block that has ended
    std::uint32_t frames = 0;        ///< counted up to the last that is translated, by the published rules
    bool fast_ready = false;         ///< the fast loop's tables are those of the current block
    std::unique_ptr<fast_loop> fast; ///< created when first used
};

} // namespace algorithm::lzx
