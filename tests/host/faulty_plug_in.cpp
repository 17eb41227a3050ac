#include "harbor6/groundwork/export.h"

#include <dlfcn.h>
#include <stdexcept>
#include <string_view>

// A plug-in that raises an exception while it is loaded if its file name contains "constructor", and when it
// is asked for its formats otherwise.

namespace {

bool raises_early();

const bool early = raises_early();

bool raises_early() {
    Dl_info self = {};
    dladdr(&early, &self);
    if (std::string_view(self.dli_fname).find("constructor") != std::string_view::npos)
        throw std::runtime_error("early fault");
    return false;
}

} // namespace

extern "C" HARBOR6_API bool loadFormats(void* /*classifier*/, void* /*shell*/) {
    throw std::runtime_error("late fault");
}
