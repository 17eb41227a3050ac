#pragma once

#include "harbor6/groundwork/platform.h"
#include "harbor6/model/classifier.h"
#include "harbor6/shell/harbor_shell.h"

namespace host {

class report;

/// The formats that the program knows: what the plug-ins of a folder brought. It keeps the plug-ins loaded,
/// so it has to outlive every item and exception that comes from one.
class format_registry {
public:
    explicit format_registry(harbor6::ClientInterface& client) : shell(classifier, client) {}
    format_registry(const format_registry&) = delete;
    format_registry& operator=(const format_registry&) = delete;

    /// Loads every plug-in in `folder`, or in the folder of formats beside the program if that is empty. A
    /// plug-in that can't be loaded is reported, and so is a folder without any.
    void load(const std::string& folder, report& log);

private:
    std::vector<platform::library> plug_ins; ///< the formats' code, which goes last

public:
    harbor6::Classifier classifier;
    harbor6::HarborShell shell;
};

} // namespace host
