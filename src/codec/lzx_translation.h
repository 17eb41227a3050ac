#pragma once

#include <cstddef>
#include <cstdint>

namespace algorithm::lzx {

/// Turns the absolute operands of x86 CALL instructions (0xE8) in one frame back into relative ones.
/// `instruction_position`, the stream position of the frame's first byte, moves on behind the frame.
///
/// The operands are read with the frame's last six bytes overwritten by 0xE8, and those six come back as they
/// were. So an operand that touches them has a top byte of 0xE8, whatever stands there; writers rely on it.
void translate_calls(std::uint8_t* frame, std::size_t length, std::uint32_t translation_size,
                     std::uint32_t& instruction_position);

} // namespace algorithm::lzx
