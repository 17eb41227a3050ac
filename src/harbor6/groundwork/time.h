#pragma once

#include "harbor6/groundwork/export.h"

#include <array>
#include <cstdint>

namespace any {

/// A point in time as an attribute value: six words, whose meaning is that of fs::time.
struct time {
    std::array<std::uint32_t, 6> words{};

    friend bool operator==(const time&, const time&) = default;
};

} // namespace any

namespace fs {

/// A calendar time without a zone, as DOS stores it: local time of the writer, in steps of two seconds.
struct HARBOR6_API time {
    std::uint32_t year = 1980;
    std::uint32_t month = 1;  ///< 1 to 12
    std::uint32_t day = 1;    ///< of the month, from 1 on
    std::uint32_t hour = 0;   ///< 0 to 23
    std::uint32_t minute = 0; ///< 0 to 59
    std::uint32_t second = 0; ///< 0 to 59

    time() = default;
    /// From six words in the order of the members; not checked.
    explicit time(const any::time& value);

    operator any::time() const;

    /// Takes a DOS date word (year - 1980, month, day in 7, 4 and 5 bits) and a DOS time word (hour, minute,
    /// second / 2 in 5, 6 and 5 bits). Never fails: an invalid field becomes the nearest valid one. Month 0
    /// is January, 30 February the last day of that month, hour 31 is 23, second 62 is 58.
    void set_dos(std::uint16_t dos_date, std::uint16_t dos_time);

    friend bool operator==(const time&, const time&) = default;
};

} // namespace fs
