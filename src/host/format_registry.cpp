#include "host/format_registry.h"

#include "harbor6/groundwork/text.h"
#include "harbor6/model/format.h"
#include "host/platform/plug_in_file.h"
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

void format_registry::load_file(const std::string& path, report& log) {
    auto fault = plug_in_fault(path);
    if (fault.empty()) {
        try {
            platform::library plug_in(path);
            auto* const load_formats = reinterpret_cast<loader*>(plug_in.symbol("loadFormats"));
            // Kept even if it raises: the exception is an object of its code.
            plug_ins.push_back(std::move(plug_in));
            if (!load_formats(classifier, &shell))
                fault = "its formats were not accepted";
        } catch (...) {
            fault = failure_text(std::current_exception());
        }
    }
    if (fault.empty())
        return;
    const auto name = nio::printable(path) + ": ";
    log.error(fault.starts_with(name) ? fault : name + fault);
}

void format_registry::load(const std::string& wanted, report& log) {
    const auto folder = wanted.empty() ? default_folder() : wanted;
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error))
        if (entry->path().extension() == ".so")
            files.push_back(entry->path());
    std::sort(files.begin(), files.end());
    for (const auto& file : files)
        load_file(file.string(), log);
    if (classifier.formats().empty())
        log.error("no formats found in " + nio::printable(folder) +
                  (error ? ": " + error.message() : std::string()));
}

} // namespace host
