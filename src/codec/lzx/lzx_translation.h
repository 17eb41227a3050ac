#pragma once

#include <cstddef>
#include <cstdint>

namespace algorithm::lzx {

/// Turns the absolute operands of x86 CALL instructions (0xE8) in one frame back into relative ones.
/// `instruction_position`, the stream position of the frame's first byte, is advanced by `length`.
///
/// Operands from 0 to `translation_size` and from minus their position, which is not included, to 0 are
/// translated. They are read while the frame's last six bytes are overwritten by 0xE8, and those six are
/// restored at the end: the part of an operand that lies in them is read as 0xE8, whatever the frame holds
/// there, and writers rely on it. A frame of six bytes or fewer is not changed. Never fails. With
/// `published_rules` an operand of minus its position is translated too, and no call in the last ten bytes
/// is.
void translate_calls(std::uint8_t* frame, std::size_t length, std::uint32_t translation_size,
                     std::uint32_t& instruction_position, bool published_rules = false);

} // namespace algorithm::lzx
