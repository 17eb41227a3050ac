#pragma once

#include "codec/lzx/lzx_tables.h"

#include <cstdint>

namespace algorithm::lzx {

/// The symbols of a complete prefix code, or of none, in the order of their codes.
template<unsigned Symbols>
struct code_order {
    void sort(const std::uint8_t* lengths, unsigned count) {
        std::uint16_t next_index[maximum_code_length + 1] = {};
        for (unsigned symbol = 0; symbol < count; ++symbol)
            ++next_index[lengths[symbol]];
        std::uint16_t index = 0;
        std::uint32_t code = 0; // left-aligned in 16 bits
        for (unsigned l = 0; l <= maximum_code_length; ++l) {
            const std::uint16_t of_length = next_index[l];
            next_index[l] = first[l] = index;
            if (l > 0) {
                const unsigned unused = maximum_code_length - l;
                offset[l] = static_cast<int>(index) - static_cast<int>(code >> unused);
                code += std::uint32_t{of_length} << unused;
                end[l] = code;
            }
            index = static_cast<std::uint16_t>(index + of_length);
        }
        first[maximum_code_length + 1] = index;
        // Without asking which symbols have a code: that is hard to predict.
        for (unsigned symbol = 0; symbol < count; ++symbol)
            symbols[next_index[lengths[symbol]]++] = static_cast<std::uint16_t>(symbol);
    }

    bool empty() const { return first[1] == first[maximum_code_length + 1]; }

    /// The symbol whose code begins the 16 bits of `code` and is longer than `shorter`; its length goes to
    /// `size`.
    unsigned find_longer(std::uint32_t code, unsigned shorter, unsigned& size) const {
        for (size = shorter + 1; size < maximum_code_length && code >= end[size];)
            ++size;
        return symbols[offset[size] + static_cast<int>(code >> (maximum_code_length - size))];
    }

    std::uint16_t first[maximum_code_length + 2]; ///< the index of the first symbol of each code length
    std::uint16_t symbols[Symbols];               ///< those without a code stand in front
    std::int32_t offset[maximum_code_length + 1]; ///< from codes to indexes
    std::uint32_t end[maximum_code_length + 1];   ///< the first left-aligned code that is longer
};

} // namespace algorithm::lzx
