#include "host/command_line.h"
#include "host/commands.h"

int main(int count, char** arguments) {
    const auto parsed = host::parse_command_line(count, arguments);
    const auto* const chosen = std::get_if<host::options>(&parsed);
    return static_cast<int>(chosen ? host::run(*chosen) : std::get<host::exit_status>(parsed));
}
