#include "host/report.h"

#include "harbor6/groundwork/exception.h"
#include "harbor6/groundwork/text.h"
#include "host/memory_reserve.h"

#include <new>

namespace host {

std::string failure_text(const std::exception_ptr& failure) {
    std::string text;
    try {
        std::rethrow_exception(failure);
    } catch (const basic::bad_alloc&) {
        text = "out of memory";
    } catch (const std::bad_alloc&) {
        text = "out of memory";
    } catch (const std::exception& known) {
        text = known.what();
    } catch (...) {
    }
    return text.empty() ? "unknown failure" : nio::printable(text);
}

/// Runs `line`, which reports something. Files are reported from destructors too, so it must not raise.
template<class Line>
void report::guarded(Line line) {
    try {
        line();
    } catch (const std::bad_alloc&) {
        sound = false;
        failed = true;
        print_out_of_memory();
    }
}

void report::begin_archive(const std::string& name) {
    memory_reserve::refill();
    archive = nio::printable(name);
    afterwards.clear();
    ended_early = 0;
    sound = true;
}

void report::archive_error(const std::string& text) {
    error(archive + ": " + text);
}

void report::data_error(const std::string& failure) {
    archive_error(ended_early == 1 ? at_hand + ": " + failure : failure);
}

bool report::end_archive() {
    for (const auto& line : afterwards)
        archive_error(line);
    afterwards.clear();
    return sound;
}

void report::error(const std::string& text) {
    sound = false;
    failed = true;
    out.flush(); // keeps the order where both outputs are one terminal
    print_error_line("harbor: " + text);
}

void report::done(const std::string& path, std::uint64_t /*size*/) {
    if (verbose)
        guarded([&] { out.print(nio::printable(path) + "\n"); });
}

void report::refused(const std::string& path, const std::string& reason) {
    guarded([&] { archive_error(nio::printable(path) + ": " + reason); });
}

void report::unfinished(const std::string& path, std::uint64_t size, const std::string& reason) {
    guarded([&] {
        auto name = nio::printable(path);
        afterwards.push_back(name + ": incomplete after " + un::write(size, 10, 1) + " bytes" +
                             (reason.empty() ? "" : ": " + nio::printable(reason)));
        if (reason.empty()) {
            at_hand = std::move(name);
            ++ended_early;
        }
    });
}

void report::missing(const std::string& path) {
    guarded([&] {
        afterwards.push_back((path.empty() ? "(no name)" : nio::printable(path)) + ": no data arrived");
    });
}

void report::moved(const std::string& from, const std::string& to) {
    // The folder in `from` has a temporary name, which means nothing to the user.
    if (verbose)
        guarded([&] {
            out.print(nio::printable(nio::leaf(from, '/')) + ": now at " + nio::printable(to) + "\n");
        });
}

void report::skipped(const std::string& path, const std::string& reason) {
    if (verbose)
        out.print(nio::printable(path) + ": " + reason + "\n");
}

} // namespace host
