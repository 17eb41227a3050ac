#pragma once

#include "harbor6/stream/structure.h"

#include <array>
#include <cstdint>

namespace un {

/// Copies `source` into `target` if that has the class Structure; otherwise returns false.
template<class Structure>
bool copy_to(structure& target, const Structure& source) {
    auto* const same = dynamic_cast<Structure*>(&target);
    if (same)
        *same = source;
    return same != nullptr;
}

} // namespace un

namespace fs {

/// Identifies an object of a file system, whatever its name: the value of "fsSpec".
class HARBOR6_API Spec : public un::structure {
public:
    ~Spec() override;

    std::uint64_t device = 0;
    std::uint64_t node = 0;

    friend bool operator==(const Spec& a, const Spec& b) { return a.device == b.device && a.node == b.node; }
};

} // namespace fs

// Finder information of Macintosh file systems, as attribute values.

namespace io::mac {

/// Four letters in one word, the first in the most significant byte.
struct os_type {
    std::uint32_t code = 0;
};

class HARBOR6_API file_info : public un::structure {
public:
    ~file_info() override;

    os_type type;
    os_type creator;
};

// The contents of the three that follow are copied and not interpreted.

class HARBOR6_API extended_file_info : public un::structure {
public:
    ~extended_file_info() override;

    std::array<char, 16> bytes{};
};

class HARBOR6_API folder_info : public un::structure {
public:
    ~folder_info() override;

    std::array<char, 16> bytes{};
};

class HARBOR6_API extended_folder_info : public un::structure {
public:
    ~extended_folder_info() override;

    std::array<char, 16> bytes{};
};

} // namespace io::mac

namespace io::win32 {

/// The DOS attributes of a file, which several archive formats store as one word of flags.
class HARBOR6_API attributes : public un::structure {
public:
    ~attributes() override;

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
