#include "outside/groundwork/exception.h"
#include "stream/array_input.h"
#include "stream/endian_input.h"

#include <cstdio>

/// Reads through the installed library and catches one of its exceptions, whose type must cross the border.
int main() {
    const un::array<char> bytes("MSCF*");
    stream::array_input input(bytes, 0);
    stream::little_endian_input numbers(input);
    if (numbers.read32() != 0x4643534D)
        return 1;
    try {
        numbers.read16();
    } catch (const stream::exception& failure) {
        std::puts(failure.what());
        return 0;
    }
    return 1;
}
