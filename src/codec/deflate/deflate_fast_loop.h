#pragma once

#include "codec/deflate/deflate_bit_input.h"
#include "codec/deflate/deflate_code_table.h"
#include "codec/deflate/deflate_history_window.h"
#include "harbor6/concurrency/buffered_input.h"

#include <array>
#include <cstdint>
#include <span>

namespace deflate {

/// The middle of a block, decoded with wide reads and writes. It knows nothing of ends, faults or the output:
/// whatever it can't take in its stride stays for the exact loop, which meets it in the very state that it
/// would have reached alone. Every call may therefore do nothing at all.
///
/// What must hold on entry: nothing was read past the end of the input. On exit the bit_input stands ahead of
/// a symbol, and the read-ahead where filling it would have left it.
class fast_loop {
public:
    /// Decodes code lengths and their runs into `list`, and returns how many entries of it are done.
    std::size_t read_lengths(const code_table& lengths, nio::buffered_input& input, bit_input& bits,
                             std::span<std::uint8_t> list);

    /// The block's codes have changed; the look-up tables follow when they are first wanted.
    void forget() { ready = false; }

    /// Decodes literals and matches of the plain form, by the codes that forget() announced.
    void decode(const code_table& literals, const code_table& distances, nio::buffered_input& input,
                bit_input& bits, history_window& window);

    /// Whether decode() may use instructions that this processor has and some other lacks.
    bool newer_instructions = true;

private:
    static constexpr unsigned literal_bits = 11;
    static constexpr unsigned distance_bits = 9;

    void prepare(const code_table& literals, const code_table& distances);
    void decode_symbols(const code_table& literals, const code_table& distances, nio::buffered_input& input,
                        bit_input& bits, history_window& window);
    void decode_with_bmi2(const code_table& literals, const code_table& distances, nio::buffered_input& input,
                          bit_input& bits, history_window& window);

    std::array<std::uint32_t, 1u << literal_bits> literal_entries;
    std::array<std::uint32_t, 1u << distance_bits> distance_entries;
    bool ready = false;
};

} // namespace deflate
