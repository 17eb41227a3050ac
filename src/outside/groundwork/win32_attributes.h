#pragma once

#include <cstdint>

namespace io::win32 {

/// DOS file attributes, which archives of several formats keep as a word of flags.
struct attributes {
    bool read_only = false;
    bool hidden = false;
    bool system = false;
    bool archive = false;
    bool executable = false;
    bool utf8_name = false;

    void from_dos_flags(std::uint16_t flags) {
        read_only = flags & 0x01;
        hidden = flags & 0x02;
        system = flags & 0x04;
        archive = flags & 0x20;
        executable = flags & 0x40;
        utf8_name = flags & 0x80;
    }
};

} // namespace io::win32
