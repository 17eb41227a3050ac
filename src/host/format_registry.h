#pragma once

#include "harbor6/groundwork/platform.h"
#include "harbor6/model/classifier.h"
#include "harbor6/shell/harbor_shell.h"

namespace host {

class report;

/// The formats that the program can use: those of the plug-ins in a folder. It keeps the plug-ins loaded, so
/// it must outlive every item and exception that comes from one. One thread.
class format_registry {
public:
    explicit format_registry(harbor6::ClientInterface& client) : shell(classifier, client) {}
    format_registry(const format_registry&) = delete;
    format_registry& operator=(const format_registry&) = delete;

    /// Loads every plug-in in `folder`, or, if that is empty, in the folder of formats beside the program.
    /// Reports each plug-in that can't be loaded, and a folder without any formats.
    void load(const std::string& folder, report& log);

private:
    void load_file(const std::string& path, report& log);

    std::vector<platform::library> plug_ins; ///< declared first, so unloaded last

public:
    harbor6::Classifier classifier;
    harbor6::HarborShell shell;
};

} // namespace host
