#pragma once

#include "stream/structure.h"

#include <array>

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

/// The rest are carried whole and not looked into.
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
