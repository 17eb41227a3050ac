#include "model/format.h"
#include "outside/groundwork/exception.h"
#include "stream/array_input.h"
#include "stream/endian_input.h"

#include <cstdio>

namespace {

/// A format that somebody else brings.
class Mine : public harbor6::Format {
public:
    Mine() : Format(nullptr) { format_name = "mine"; }
};

/// Reads through the installed library and catches one of its exceptions, whose type must cross the border.
bool reads() {
    const un::array<char> bytes("MSCF*");
    stream::array_input input(bytes, 0);
    stream::little_endian_input numbers(input);
    if (numbers.read32() != 0x4643534D)
        return false;
    try {
        numbers.read16();
    } catch (const stream::exception&) {
        return true;
    }
    return false;
}

} // namespace

int main() {
    const Mine mine;
    std::string name;
    if (!mine.getString("formatName", name) || name != "mine") {
        std::puts("the library does not find the derived format's name");
        return 1;
    }
    if (!reads()) {
        std::puts("the library does not read, or its failure is not caught");
        return 1;
    }
    return 0;
}
