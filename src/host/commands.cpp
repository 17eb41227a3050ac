#include "host/commands.h"

#include "harbor6/groundwork/text.h"
#include "harbor6/model/format.h"
#include "host/tally.h"

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
