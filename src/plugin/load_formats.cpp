#include "outside/groundwork/export.h"
#include "outside/shell/classifier.h"
#include "plugin/format.h"

/// Registers the cabinet format with the host, which owns it from then on; answers what the host's registry
/// answered.
extern "C" HARBOR6_API bool loadFormats(harbor6::Classifier& classifier, harbor6::HarborShell* shell) {
    return classifier.addFormat(*new harbor6::cab::Format(shell));
}
