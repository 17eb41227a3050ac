#include "host/commands.h"
#include "host/tally_folder.h"
#include "outside/groundwork/text.h"

namespace host {

void test(workplace& at) {
    for (const auto& archive : at.chosen.archives) {
        at.log.begin(archive);
        tally counts{at.items, at.log};
        const pattern::AcquiredPtr<TallyFolder> top(new TallyFolder(counts));
        run_pass(at.known, at.items, at.log, archive, *top);
        if (at.log.end())
            at.log.screen.print(nio::printable(archive) + ": OK\n");
    }
}

} // namespace host
