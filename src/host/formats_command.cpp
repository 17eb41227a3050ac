#include "host/commands.h"
#include "model/format.h"
#include "outside/groundwork/text.h"

namespace host {

void show_formats(workplace& at) {
    namespace key = harbor6::key;
    auto& screen = at.log.screen;
    for (const auto& format : at.known.formats.formats()) {
        screen.print(nio::printable(format->string(key::formatName)) + '\n');
        for (const auto* const text : {key::longName, key::suffix, key::mimeType})
            if (const auto value = format->string(text); !value.empty())
                screen.print("  " + std::string(text) + ": " + nio::printable(value) + '\n');
        for (const auto* const flag : {key::expandsArchives, key::createsArchives, key::recoversArchives,
                                       key::isFolder, key::isFile, key::isSegmented})
            if (format->hasBoolean(flag))
                screen.print("  " + std::string(flag) + ": " + (format->boolean(flag) ? "yes" : "no") + '\n');
    }
}

} // namespace host
