#pragma once

#include "support/cabinet_writer.h"

#include <optional>
#include <random>
#include <string_view>

/// Changes cabinets record by record, so that the fuzzer gets past signatures, counts and checksums: what is
/// written again is well-formed except for what an edit damaged.
namespace cabinet_mutator {

/// The cabinet that `bytes` begin with, as far as its records can be told apart; nothing if there is no
/// header. Every field is kept but the offsets, the counts and the checksums, which the writer works out.
std::optional<support::cabinet> parse(std::string_view bytes);

/// One random edit. `mutate` changes bytes in its own manner and returns at most the given length.
using byte_mutator = std::string (*)(std::string bytes, std::size_t longest);
void edit(support::cabinet& made, std::mt19937& dice, byte_mutator mutate);

/// Appends folders and files of `other`.
void join(support::cabinet& made, const support::cabinet& other);

} // namespace cabinet_mutator
