#pragma once

#include "host/archive_pass.h"
#include "host/client.h"
#include "host/command_line.h"

namespace host {

/// What every command has at hand.
struct workplace {
    const options& chosen;
    registry& known;
    Client& client;
    harbor6::Format& items; ///< the format of items that lie in no archive
    report& log;
};

/// Loads the formats and does what the command line asks for.
exit_status run(const options& chosen);

void expand(workplace& at);
void list(workplace& at);
void test(workplace& at);
void show_formats(workplace& at);

} // namespace host
