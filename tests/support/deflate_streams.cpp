#include "support/deflate_streams.h"

#include "codec/deflate/deflate_decompressor.h"
#include "harbor6/groundwork/exception.h"
#include "support/memory_streams.h"

#include <stdexcept>

namespace deflate_streams {

bit_writer& bit_writer::field(std::uint32_t value, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        if (used == 8) {
            bytes += '\0';
            used = 0;
        }
        bytes.back() =
            static_cast<char>(static_cast<unsigned char>(bytes.back()) | (value >> i & 1) << used++);
    }
    return *this;
}

bit_writer& bit_writer::code(std::uint32_t value, unsigned count) {
    while (count-- > 0)
        field(value >> count, 1);
    return *this;
}

bit_writer& bit_writer::fixed(unsigned symbol) {
    return symbol < 144   ? code(0x30 + symbol, 8)
           : symbol < 256 ? code(0x190 + symbol - 144, 9)
           : symbol < 280 ? code(symbol - 256, 7)
                          : code(0xC0 + symbol - 280, 8);
}

outcome decode(std::string_view source, bool exact_only, const settings& how) {
    support::seekable_input in(std::string(source), how.piece);
    support::memory_output out;
    deflate::decompressor decoder(in, out);
    decoder.extent = how.extent;
    decoder.rewind = true;
    if (exact_only)
        decoder.use_exact_loop_only();
    if (how.portable)
        decoder.use_portable_code_only();
    std::string message;
    for (unsigned run = 0; run < how.runs && message.empty(); ++run) {
        try {
            decoder.run();
        } catch (const basic::algorithm_exception& failure) {
            message = failure.what();
        }
        if (out.finished != run + 1)
            throw std::logic_error("each run must call the output's finish() once");
    }
    return {out.bytes, message, in.tell(), out.writes};
}

} // namespace deflate_streams
