#include "harbor6/groundwork/time.h"

#include <algorithm>
#include <chrono>

namespace fs {

time::time(const any::time& value)
    : year(value.words[0]), month(value.words[1]), day(value.words[2]), hour(value.words[3]),
      minute(value.words[4]), second(value.words[5]) {}

time::operator any::time() const {
    return {{year, month, day, hour, minute, second}};
}

void time::set_dos(std::uint16_t dos_date, std::uint16_t dos_time) {
    namespace chrono = std::chrono;
    year = 1980u + (dos_date >> 9);
    month = std::clamp(dos_date >> 5 & 15u, 1u, 12u);
    const auto last = chrono::year_month_day_last(chrono::year(static_cast<int>(year)),
                                                  chrono::month_day_last(chrono::month(month)));
    day = std::clamp(dos_date & 31u, 1u, static_cast<unsigned>(last.day()));
    hour = std::min(dos_time >> 11 & 31u, 23u);
    minute = std::min(dos_time >> 5 & 63u, 59u);
    second = std::min((dos_time & 31u) * 2, 58u);
}

} // namespace fs
