#include "harbor6/groundwork/exception.h"
#include "harbor6/model/format.h"
#include "harbor6/stream/array_input.h"
#include "harbor6/stream/endian_input.h"

#include <cstdio>

/// A format that the library does not define.
struct Mine : harbor6::Format {
    Mine() : Format(nullptr) { format_name = "mine"; }
};

/// Reads through the installed library and catches one of its exceptions by type.
int main() {
    const un::array<char> bytes("MSCF*");
    stream::array_input input(bytes, 0);
    stream::little_endian_input numbers(input);
    bool right = Mine().string("formatName") == "mine" && numbers.read32() == 0x4643534D;
    try {
        numbers.read16();
        right = false;
    } catch (const stream::exception&) {
    }
    if (!right)
        std::puts(
            "the library does not read, or its failure is not caught, or it does not find a format's name");
    return right ? 0 : 1;
}
