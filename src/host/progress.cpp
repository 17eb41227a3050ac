#include "host/progress.h"

#include "harbor6/groundwork/text.h"
#include "host/platform/console.h"
#include "host/platform/terminal.h"
#include "host/report.h"

#include <algorithm>

namespace host {

namespace {

constexpr auto first_drawing = std::chrono::milliseconds(500);
constexpr auto between_drawings = std::chrono::milliseconds(100);

/// As "0:07" or "1:02:03".
std::string written_time(std::uint64_t seconds) {
    const auto minutes = seconds / 60;
    const auto hours = minutes / 60;
    return (hours > 0 ? un::write(hours, 10, 1) + ':' + un::write(minutes % 60, 10, 2)
                      : un::write(minutes, 10, 1)) +
           ':' + un::write(seconds % 60, 10, 2);
}

} // namespace

std::string progress_line(std::uint64_t done, std::uint64_t total, double seconds, const std::string& what,
                          std::size_t width) {
    const bool sized = total != progress::unknown && total > 0;
    const double rate = seconds > 0 ? static_cast<double>(done) / seconds : 0;
    std::string line;
    if (sized)
        line = un::write(
                   std::min<std::uint64_t>(100, static_cast<std::uint64_t>(100.0 * static_cast<double>(done) /
                                                                           static_cast<double>(total))),
                   10, 1) +
               "%";
    else
        line = human_size(done);
    line.insert(0, line.size() < 4 ? 4 - line.size() : 0, ' ');
    line += "  " + human_size(static_cast<std::uint64_t>(rate)) + "/s";
    if (sized && rate > 0 && total >= done)
        line += "  " +
                written_time(static_cast<std::uint64_t>(static_cast<double>(total - done) / rate + 0.5)) +
                " left";
    line += "  " + what;
    // Cut after whole characters, each taken for one column.
    std::size_t columns = 0;
    for (std::size_t i = 0; i < line.size(); ++i)
        if ((static_cast<unsigned char>(line[i]) & 0xC0) != 0x80 && ++columns > width)
            return line.substr(0, i);
    return line;
}

void progress::begin(const std::string& archive, std::uint64_t total) {
    end();
    const std::lock_guard lock(mutex);
    what = nio::printable(archive);
    file.clear();
    size = total;
    begun = clock::now();
    next_drawing = begun + first_drawing;
}

void progress::at_file(const std::string& path) {
    if (!draws)
        return;
    const std::lock_guard lock(mutex);
    file = path;
}

void progress::go_to(std::uint64_t place) {
    if (shared)
        return shared->store(place, std::memory_order_relaxed);
    const std::lock_guard lock(mutex);
    const auto now = clock::now();
    if (now < next_drawing)
        return;
    next_drawing = now + between_drawings;
    const std::chrono::duration<double> passed = now - begun;
    show_status(progress_line(place, size, passed.count(),
                              file.empty() ? what : what + ": " + nio::printable(file),
                              terminal_width() - 1));
}

void progress::end() {
    if (draws && !shared)
        show_status({});
}

} // namespace host
