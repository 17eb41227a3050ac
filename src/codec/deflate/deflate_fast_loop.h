#pragma once

#include "codec/deflate/deflate_bit_input.h"
#include "codec/deflate/deflate_code_table.h"
#include "codec/deflate/deflate_history_window.h"
#include "harbor6/concurrency/buffered_input.h"

#include <array>
#include <cstdint>
#include <span>

namespace deflate {

/// Decodes the middle of a block with wide reads and writes. It handles neither the ends of input, block and
/// buffer nor unsound data: it stops before them, in the state that the exact loop would have there, and
/// leaves them to that loop. Any call may therefore do nothing.
///
/// On entry nothing may have been read past the end of the input. On exit the bit_input is positioned before
/// a symbol, and the read-ahead where filling the bit_input would have left it. It owns its tables only, and
/// keeps no reference to what is passed. For one thread at a time.
class fast_loop {
public:
    /// Decodes code lengths and their runs into `list`, and returns the number of entries set.
    std::size_t read_lengths(const code_table& lengths, nio::buffered_input& input, bit_input& bits,
                             std::span<std::uint8_t> list);

    /// To be called when the block's codes have changed; the next decode() rebuilds its tables.
    void codes_changed() { tables_built = false; }

    /// Decodes literals and matches of the plain form by these codes, which must be the same until
    /// codes_changed().
    void decode(const code_table& literals, const code_table& distances, nio::buffered_input& input,
                bit_input& bits, history_window& window);

    /// Whether decode() may use BMI2 instructions, if this processor has them.
    bool use_bmi2 = true;

private:
    static constexpr unsigned literal_bits = 11;
    static constexpr unsigned distance_bits = 9;

    void build_tables(const code_table& literals, const code_table& distances);
    void decode_symbols(const code_table& literals, const code_table& distances, nio::buffered_input& input,
                        bit_input& bits, history_window& window);
    void decode_with_bmi2(const code_table& literals, const code_table& distances, nio::buffered_input& input,
                          bit_input& bits, history_window& window);

    std::array<std::uint32_t, 1u << literal_bits> literal_entries;
    std::array<std::uint32_t, 1u << distance_bits> distance_entries;
    bool tables_built = false;
};

} // namespace deflate
