#include "host/commands.h"

#include "harbor6/groundwork/text.h"
#include "harbor6/model/format.h"
#include "host/extraction.h"

namespace host {

namespace {

/// The format of items outside any archive.
class PlainFormat : public harbor6::Format {
public:
    using harbor6::Format::Format;

    bool isFileSystem() const override { return true; }
};

} // namespace

exit_status run(const options& chosen) {
    console out;
    report log(out, chosen.verbose);
    Client client(log);
    format_registry formats(client);
    PlainFormat plain_format(&formats.shell);
    command_context context{chosen, formats, client, plain_format, log};
    try {
        nio::set_code_page(chosen.encoding);
    } catch (const un::exception& failure) {
        log.error(nio::printable(failure.message()));
        return exit_status::usage;
    }
    try {
        formats.load(chosen.formats, log);
        switch (chosen.to_run) {
        case options::command::expand:
            expand(context);
            break;
        case options::command::list:
            list(context);
            break;
        case options::command::test:
            test(context);
            break;
        case options::command::formats:
            show_formats(context);
            break;
        }
    } catch (...) {
        log.error(failure_text(std::current_exception()));
    }
    if (const auto cause = out.finish(); !cause.empty())
        log.error("cannot write to the standard output: " + cause);
    return log.status();
}

void show_formats(command_context& context) {
    namespace key = harbor6::key;
    auto& out = context.log.out;
    for (const auto& format : context.formats.classifier.formats()) {
        out.print(nio::printable(format->string(key::formatName)) + '\n');
        for (const auto* const text : {key::longName, key::suffix, key::mimeType})
            if (const auto value = format->string(text); !value.empty())
                out.print("  " + std::string(text) + ": " + nio::printable(value) + '\n');
        for (const auto* const flag : {key::expandsArchives, key::createsArchives, key::recoversArchives,
                                       key::isFolder, key::isFile, key::isSegmented})
            if (format->hasBoolean(flag))
                out.print("  " + std::string(flag) + ": " + (format->boolean(flag) ? "yes" : "no") + '\n');
    }
}

void test(command_context& context) {
    for (const auto& archive : context.chosen.archives) {
        context.log.begin_archive(archive);
        tally counts{context.plain_format, context.log};
        counts.check_names = true;
        tally_archive(context, archive, counts);
        if (context.log.end_archive())
            context.log.out.print(nio::printable(archive) + ": OK\n");
    }
}

void tally_archive(command_context& context, const std::string& path, tally& counts) {
    const pattern::AcquiredPtr<TallyFolder> top(new TallyFolder(counts));
    extract_archive(context, path, *top);
}

} // namespace host
