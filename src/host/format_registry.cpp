#include "host/format_registry.h"

#include "harbor6/groundwork/text.h"
#include "harbor6/model/format.h"
#include "host/report.h"

#include <algorithm>
#include <filesystem>

namespace host {

namespace {

using loader = bool(harbor6::Classifier&, harbor6::HarborShell*);

std::string default_folder() {
    const auto program = std::filesystem::path(platform::executable_path()).parent_path();
    std::error_code error;
    for (const auto* const place : {"lib/harbor6/formats", "../lib/harbor6/formats"})
        if (std::filesystem::is_directory(program / place, error))
            return (program / place).string();
    return (program / "lib/harbor6/formats").string();
}

} // namespace

void format_registry::load(const std::string& wanted, report& log) {
    const auto folder = wanted.empty() ? default_folder() : wanted;
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error))
        if (entry->path().extension() == ".so")
            files.push_back(entry->path());
    std::sort(files.begin(), files.end());
    for (const auto& file : files) {
        try {
            platform::library plug_in(file.string());
            auto* const load_formats = reinterpret_cast<loader*>(plug_in.symbol("loadFormats"));
            plug_ins.push_back(std::move(plug_in));
            if (!load_formats(classifier, &shell))
                log.error(nio::printable(file.string()) + ": its formats were not accepted");
        } catch (const un::exception& failure) {
            log.error(nio::printable(file.string()) + ": " + nio::printable(failure.message()));
        }
    }
    if (classifier.formats().empty())
        log.error("no formats found in " + nio::printable(folder) +
                  (error ? ": " + error.message() : std::string()));
}

} // namespace host
