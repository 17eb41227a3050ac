#include "host/help_format.h"

#include <algorithm>
#include <sstream>

namespace host {

namespace {

constexpr std::size_t text_column = 26;
constexpr std::size_t last_column = 80;

/// `head`, then `text` in the columns behind it.
void add_entry(std::string& help, const std::string& head, const std::string& text) {
    std::string line = "  " + head;
    if (line.size() + 2 > text_column) {
        help += line + '\n';
        line.clear();
    }
    std::istringstream words(text);
    bool first = true;
    for (std::string word; words >> word; first = false) {
        if (!first && line.size() + 1 + word.size() > last_column) {
            help += line + '\n';
            line.clear();
            first = true;
        }
        if (first)
            line.resize(text_column, ' ');
        else
            line += ' ';
        line += word;
    }
    help += line + '\n';
}

std::string usage_of(const CLI::App& app) {
    if (!app.get_parent())
        return "Usage: harbor COMMAND [OPTION...] CABINET... [-- GLOB...]\n       harbor CABINET...\n";
    std::string usage = "Usage: harbor " + app.get_name() + " [OPTION...]";
    for (const auto* const option : app.get_options())
        if (option->get_positional())
            usage += ' ' + option->get_type_name();
    return usage + (app.get_option_no_throw("--only") ? " [-- GLOB...]\n" : "\n");
}

/// As "-C, --directory DIR".
std::string option_head(const CLI::Option& option) {
    std::string head;
    for (const char c : option.get_name(false, true))
        head += c == ',' ? std::string(", ") : std::string(1, c);
    // A check, such as a range, puts its own description behind the name.
    const auto value = option.get_type_name();
    if (option.get_type_size() != 0 && !value.empty())
        head += ' ' + value.substr(0, value.find(':'));
    return head;
}

} // namespace

std::string help_format::make_help(const CLI::App* app, std::string /*name*/,
                                   CLI::AppFormatMode /*mode*/) const {
    std::string help = usage_of(*app) + app->get_description() + "\n";
    const auto commands = app->get_subcommands([](const CLI::App*) { return true; });
    if (!commands.empty())
        help += "\nCommands:\n";
    for (const auto* const command : commands) {
        const auto& aliases = command->get_aliases();
        add_entry(help, command->get_name() + (aliases.empty() ? "" : ", " + aliases.front()),
                  command->get_description());
    }
    auto groups = app->get_groups();
    // What one command alone has comes first.
    std::stable_partition(groups.begin(), groups.end(),
                          [](const std::string& group) { return group.starts_with("Writing"); });
    for (const auto& group : groups) {
        const auto options = app->get_options(
            [&](const CLI::Option* each) { return !each->get_positional() && each->get_group() == group; });
        if (options.empty() || group.empty())
            continue;
        help += '\n' + group + ":\n";
        for (const auto* const option : options)
            add_entry(help, option_head(*option), option->get_description());
    }
    const auto footer = app->get_footer();
    return footer.empty() ? help : help + '\n' + footer;
}

} // namespace host
