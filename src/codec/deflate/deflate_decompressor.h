#pragma once

#include "codec/deflate/deflate_bit_input.h"
#include "codec/deflate/deflate_code_table.h"
#include "codec/deflate/deflate_fast_loop.h"
#include "codec/deflate/deflate_history_window.h"
#include "harbor6/concurrency/buffered_input.h"
#include "harbor6/concurrency/transform_input.h"

#include <optional>

namespace deflate {

/// Decodes Deflate (RFC 1951): each run takes one stream from the input, from its first block to the one
/// marked final, and writes its bytes to the output. It runs any number of times, one after the other, and
/// the history lasts from run to run. While a run is on, everything belongs to the thread that runs it.
///
/// A failure is a basic::algorithm_exception, or whatever the streams raise; the output's finish() has been
/// called by then as after a sound run. Past the end of the input ones are read; the run fails only when a
/// code is wanted after more than four such bytes. A distance never reaches behind the first byte decoded.
class decompressor final : public nio::transform {
public:
    decompressor(nio::input& input, nio::output& output);
    ~decompressor();

    void run() override;

    /// Base-2 logarithm of the window, 10 to 25. 16 is the extended form, where length symbol 285 takes 16
    /// extra bits; 0 means that the first byte of the input gives it. Set ahead of the first run.
    std::int32_t extent = 15;
    /// Leave the input behind the last byte that belongs to the stream, by seeking it.
    bool rewind = false;
    /// Decode everything by the exact loop. For tests: the result is the same either way.
    bool exact_only = false;
    /// Keep to instructions that every processor of the kind has. For tests, too.
    bool portable_only = false;

private:
    void decode();
    void read_block(code_table& literal_table);
    void start_stored_block();
    void set_fixed_lengths(code_table& literal_table);
    void build_codes(code_table& literal_table);
    void read_dynamic_lengths(code_table& literal_table);
    void read_code_lengths(std::span<std::uint8_t> list);
    void decode_stored();
    void copy_stored();
    void decode_codes(const code_table& literal_table);
    void copy_match(const code_table& literal_table, unsigned length_symbol);
    unsigned symbol(const code_table& table);

    nio::buffered_input buffered;
    bit_input bits;
    std::int32_t block_type = -1;   ///< 0 stored, 1 fixed, 2 dynamic; -1 before the first block
    bool fixed_codes_stand = false; ///< this run's tables are those of the fixed codes
    std::uint32_t stored_remaining = 0;
    std::uint32_t maximum_match = 0;
    std::optional<code_table> distance_table; ///< made anew on each run
    code_table code_length_table;
    history_window window;
    fast_loop fast;
};

} // namespace deflate
