#pragma once

#include "harbor6/groundwork/export.h"

namespace harbor6 {
class Classifier;
class HarborShell;
} // namespace harbor6

/// The one function that a plug-in defines and exports: registers its formats, each made with new, by
/// Classifier::addFormat, and returns whether they were accepted. `shell` outlives them. A host calls it once
/// for each registry; it may be called for several, on different threads.
extern "C" HARBOR6_API bool loadFormats(harbor6::Classifier& classifier, harbor6::HarborShell* shell);
