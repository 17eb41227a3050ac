#include "host/commands.h"

#include "model/format.h"
#include "outside/groundwork/text.h"

namespace host {

namespace {

/// The format of items that stand on disk or nowhere.
class PlainFormat : public harbor6::Format {
public:
    using harbor6::Format::Format;

    bool isFileSystem() const override { return true; }
};

} // namespace

exit_status run(const options& chosen) {
    disk_console screen;
    report log(screen, chosen.verbose);
    Client client(log);
    registry known(client);
    PlainFormat items(&known.shell);
    workplace at{chosen, known, client, items, log};
    try {
        nio::set_code_page(chosen.encoding);
    } catch (const un::exception& failure) {
        log.trouble(nio::printable(failure.message()));
        return exit_status::usage;
    }
    try {
        known.load(chosen.formats, log);
        switch (chosen.to_run) {
        case options::command::expand:
            expand(at);
            break;
        case options::command::list:
            list(at);
            break;
        case options::command::test:
            test(at);
            break;
        case options::command::formats:
            show_formats(at);
            break;
        }
    } catch (...) {
        log.trouble(*failure_text());
    }
    if (const auto cause = screen.finish(); !cause.empty())
        log.trouble("cannot write to the standard output: " + cause);
    return log.status();
}

} // namespace host
