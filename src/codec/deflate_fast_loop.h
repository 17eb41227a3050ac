#pragma once

#include "codec/deflate_bit_input.h"
#include "codec/deflate_code_table.h"
#include "codec/deflate_history_window.h"
#include "concurrency/buffered_input.h"

#include <array>
#include <cstdint>

namespace deflate {

/// The middle of a block of codes, decoded with wide reads and writes. It knows nothing of ends, faults or
/// the output: whatever is neither a literal nor a sound match stays for the exact loop, which meets it in
/// the state that it would have reached alone. Plain form only.
class fast_loop {
public:
    /// The block's codes have changed; the look-up tables follow when they are first wanted.
    void forget() { ready = false; }

    /// Whether there is enough read-ahead and room to be worth a call of run().
    static bool worthwhile(const nio::buffered_input& input, const history_window& window) {
        return input.ahead().size() >= input_margin && window.room() >= output_margin;
    }

    /// Decodes symbols until read-ahead or room runs low or something is for the exact loop to see. On entry
    /// nothing was read past the end of the input and the codes are those that forget() announced. On exit
    /// `bits` stands ahead of a literal or length symbol, and holds no more than fill() would have fetched.
    void run(const code_table& literals, const code_table& distances, nio::buffered_input& input,
             bit_input& bits, history_window& window);

private:
    static constexpr unsigned literal_bits = 11;
    static constexpr unsigned distance_bits = 9;

    /// One round takes at most three words from the input, and looks at no byte beyond them.
    static constexpr unsigned input_margin = 3 * sizeof(std::uint64_t);
    /// One round stores at most three literals and a match, and scribbles on window.overshoot bytes more.
    static constexpr unsigned output_margin = 3 + longest_plain_match;

    std::array<std::uint32_t, 1u << literal_bits> literal_entries;
    std::array<std::uint32_t, 1u << distance_bits> distance_entries;
    bool ready = false;
};

} // namespace deflate
