#pragma once

#include "harbor6/model/scratch_space.h"
#include "host/client.h"
#include "host/command_line.h"
#include "host/format_registry.h"
#include "host/report.h"
#include "host/tally.h"

namespace host {

/// What every command works with.
struct command_context {
    const options& chosen;
    format_registry& formats;
    Client& client;
    harbor6::Format& plain_format; ///< the format of items outside any archive
    report& log;
    harbor6::ScratchSpace* scratch = nullptr; ///< of the archives' item trees; null: ScratchSpace::standard()
};

/// Loads the formats and runs the command that `chosen` names.
exit_status run(const options& chosen);

// The commands. What fails is reported to the context's log.
void expand(command_context& context);
void list(command_context& context);
void test(command_context& context);
void show_formats(command_context& context);

/// Reads the archive in the file `path` whole, counting its files in `counts`.
void tally_archive(command_context& context, const std::string& path, tally& counts);

} // namespace host
