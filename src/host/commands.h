#pragma once

#include "host/archive_pass.h"
#include "host/client.h"
#include "host/command_line.h"

namespace host {

/// What every command has at hand.
struct command_context {
    const options& chosen;
    format_registry& formats;
    Client& client;
    harbor6::Format& plain_format; ///< the format of items that lie in no archive
    report& log;
};

/// Loads the formats and does what the command line asks for.
exit_status run(const options& chosen);

void expand(command_context& context);
void list(command_context& context);
void test(command_context& context);
void show_formats(command_context& context);

} // namespace host
