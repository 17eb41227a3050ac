#include "host/report.h"

#include "harbor6/groundwork/exception.h"
#include "harbor6/groundwork/text.h"

#include <exception>
#include <new>

namespace host {

std::optional<std::string> failure_text() {
    if (!std::current_exception())
        return std::nullopt;
    std::string text;
    try {
        throw;
    } catch (const basic::bad_alloc&) {
        text = "out of memory";
    } catch (const std::bad_alloc&) {
        text = "out of memory";
    } catch (const std::exception& failure) {
        text = failure.what();
    } catch (...) {
    }
    return text.empty() ? "failed without saying why" : nio::printable(text);
}

void report::begin(const std::string& archive) {
    subject = nio::printable(archive);
    afterwards.clear();
    sound = true;
}

void report::failure(const std::string& text) {
    trouble(subject + ": " + text);
}

bool report::end() {
    for (const auto& line : afterwards)
        failure(line);
    afterwards.clear();
    return sound;
}

void report::trouble(const std::string& text) {
    sound = false;
    troubled = true;
    screen.flush(); // so that both outputs on one terminal come in their order
    complain("harbor: " + text);
}

void report::done(const std::string& path, std::uint64_t /*size*/) {
    if (verbose)
        screen.print(nio::printable(path) + "\n");
}

void report::refused(const std::string& path, const std::string& reason) {
    failure(nio::printable(path) + ": " + reason);
}

void report::unfinished(const std::string& path, std::uint64_t size, const std::string& reason) {
    afterwards.push_back(nio::printable(path) + ": incomplete, only " + un::write(size, 10, 1) +
                         " bytes came" + (reason.empty() ? "" : ": " + reason));
}

void report::missing(const std::string& path) {
    afterwards.push_back(nio::printable(path) + ": no data came for it");
}

void report::moved(const std::string& from, const std::string& to) {
    // Where it stood bears a name for the moment.
    if (verbose)
        screen.print(nio::printable(nio::leaf(from, '/')) + ": now at " + nio::printable(to) + "\n");
}

void report::skipped(const std::string& path, const std::string& reason) {
    if (verbose)
        screen.print(nio::printable(path) + ": " + reason + "\n");
}

} // namespace host
