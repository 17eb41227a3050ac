#include "codec/deflate/deflate_code_table.h"

#include "codec/canonical_code.h"
#include "harbor6/groundwork/exception.h"

#include <algorithm>

namespace deflate {

namespace {

constexpr unsigned short_code = 8;

} // namespace

code_table::code_table(unsigned count) : symbol_count(count) {
    std::fill_n(lengths.begin(), symbol_count, std::uint8_t{0});
}

void code_table::assign(std::span<const std::uint8_t> used) {
    used_count = static_cast<std::int32_t>(used.size());
    const auto rest = std::copy(used.begin(), used.end(), lengths.begin());
    std::fill(rest, lengths.begin() + symbol_count, std::uint8_t{0});
}

void code_table::build() {
    if (*std::max_element(lengths.begin(), lengths.begin() + symbol_count) > longest_code)
        throw basic::algorithm_exception("deflate codeword is too long");
    const codec::canonical_code<longest_code> code(lengths.data(), symbol_count);
    if (code.used() > code_space)
        throw basic::algorithm_exception("invalid deflate codeword size set");
    if (code.used() != code_space && code.used() != code_space / 2 && code.used() != 0)
        throw basic::algorithm_exception("incomplete deflate codeword size set");

    limit = code.end;
    offset[0] = offset[1] = 0;
    for (unsigned length = 2; length <= longest_code; ++length)
        offset[length] = offset[length - 1] + code.symbols[length - 1];
    for (unsigned length = 1; length <= short_code; ++length)
        std::fill(short_lengths.begin() + (limit[length - 1] >> (longest_code - short_code)),
                  short_lengths.begin() + (limit[length] >> (longest_code - short_code)),
                  static_cast<std::uint8_t>(length));

    auto next = offset;
    for (unsigned i = 0; i < symbol_count; ++i)
        if (lengths[i] != 0)
            symbols[next[lengths[i]]++] = i;
}

unsigned code_table::length(std::uint32_t value) const {
    if (value < limit[short_code])
        return short_lengths[value >> (longest_code - short_code)];
    unsigned length = short_code + 1;
    while (length < longest_code && value >= limit[length])
        ++length;
    return length;
}

std::uint32_t code_table::symbol(std::uint32_t value, unsigned length) const {
    if (value >= limit[longest_code])
        throw basic::algorithm_exception("too many deflate codewords");
    return symbols[((value - limit[length - 1]) >> (longest_code - length)) + offset[length]];
}

} // namespace deflate
