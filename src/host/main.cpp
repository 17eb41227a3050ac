#include "host/command_line.h"
#include "host/commands.h"
#include "host/memory_reserve.h"
#include "host/platform/process.h"

#include <new>

namespace {

host::exit_status run_program(int count, char** arguments) {
    const auto parsed = host::parse_command_line(count, arguments);
    const auto* const chosen = std::get_if<host::options>(&parsed);
    return chosen ? host::run(*chosen) : std::get<host::exit_status>(parsed);
}

} // namespace

int main(int count, char** arguments) {
    host::keep_time_zone();
    const host::memory_reserve reserve;
    if (!reserve.is_filled()) {
        host::print_out_of_memory();
        return static_cast<int>(host::exit_status::failed);
    }
    try {
        return static_cast<int>(run_program(count, arguments));
    } catch (const std::bad_alloc&) {
        host::print_out_of_memory();
    } catch (const std::exception&) {
        host::print_error_line("harbor: " + host::failure_text(std::current_exception()));
    }
    return static_cast<int>(host::exit_status::failed);
}
