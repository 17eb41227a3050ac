#pragma once

#include "harbor6/hosts/registry.h"
#include "harbor6/hosts/tally.h"
#include "harbor6/hosts/volume_finder.h"
#include "harbor6/model/scratch_space.h"
#include "host/archive_source.h"
#include "host/client.h"
#include "host/command_line.h"
#include "host/report.h"

#include <functional>
#include <map>
#include <string>

namespace host {

/// What every command works with.
struct command_context {
    const options& chosen;
    Registry& formats;
    Client& client;
    harbor6::Format& plain_format; ///< the format of items outside any archive
    report& log;
    VolumeFinder& volumes;
    std::map<std::string, unsigned> numbers{}; ///< archive_source::number of each file
    harbor6::ScratchSpace* scratch = nullptr; ///< of the archives' item trees; null: ScratchSpace::standard()
};

/// Loads the formats and runs the command that `chosen` names.
exit_status run(const options& chosen);

/// The folder `path`, or the nearest existing one around it.
std::string folder_around(const std::string& path);

// The commands. What fails is reported to the context's log.
void expand(command_context& context);
void list(command_context& context);
void test(command_context& context);
void find(command_context& context);
void show_formats(command_context& context);

/// Works on each archive of the command line, between begin_archive() and end_archive() of the report. Then
/// reports the patterns that matched no file.
void work_on_archives(command_context& context, const std::function<void(const archive_source&)>& work);

/// Reads the archive, counting its wanted files in `counts`. Files that share bytes get them at the same
/// time, or one after another.
void tally_archive(command_context& context, const archive_source& archive, tally& counts,
                   bool one_after_another = false);

} // namespace host
