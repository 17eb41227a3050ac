#pragma once

#include "codec/deflate/deflate_bit_input.h"
#include "codec/deflate/deflate_code_table.h"
#include "codec/deflate/deflate_fast_loop.h"
#include "codec/deflate/deflate_history_window.h"
#include "harbor6/concurrency/buffered_input.h"
#include "harbor6/concurrency/transform_input.h"

#include <optional>
#include <span>

namespace deflate {

/// Decodes Deflate (RFC 1951): each run reads one stream from the input, from its first block to the one
/// marked final, and writes its bytes to the output. It owns neither stream; both must outlive it. It can run
/// any number of times, one after the other, and the history is kept from run to run. During a run the object
/// and both streams belong to the thread that runs it.
///
/// run() calls the output's finish() however it ends. It raises basic::algorithm_exception for an unsound
/// stream, and what the streams raise. Past the end of the input bytes of ones are read; the run fails with
/// "incomplete deflate stream" when a code is decoded after more than four of them. A distance that reaches
/// behind the first decoded byte is a failure.
class decompressor final : public nio::transform {
public:
    decompressor(nio::input& input, nio::output& output);
    ~decompressor();

    void run() override;

    /// Base-2 logarithm of the window size, 10 to 25. 16 selects the extended form, where length symbol 285
    /// has 16 extra bits; 0 means that the first byte of the input states it. To be set before the first run.
    std::int32_t extent = 15;
    /// Whether run() seeks the input to the byte behind the stream at its end.
    bool rewind = false;

    /// Turns the fast loop off, for tests and fuzzing; the results are the same.
    void use_exact_loop_only() { exact_only = true; }
    /// Uses only instructions that every processor of the architecture has; the results are the same.
    void use_portable_code_only() { fast.use_bmi2 = false; }

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
    std::int32_t block_type = -1;    ///< of the current or the last block; -1 before the first
    bool fixed_codes_loaded = false; ///< this run's tables are currently those of the fixed codes
    std::uint32_t stored_remaining = 0;
    std::uint32_t maximum_match = 0;
    std::optional<code_table> distance_table; ///< new for each run
    code_table code_length_table;
    history_window window;
    fast_loop fast;
    bool exact_only = false;
};

} // namespace deflate
