#include "support/program.h"

#include <set>

// The manual page and the completions name the options that the program has.

namespace {

struct Completion : support::program {
    /// The words of small letters, digits and hyphens that follow `mark`.
    static std::set<std::string> options_in(const std::string& text, const std::string& mark = "--") {
        std::set<std::string> found;
        for (auto at = text.find(mark); at != std::string::npos; at = text.find(mark, at)) {
            at += mark.size();
            const auto end = text.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-", at);
            if (const auto word = text.substr(at, end - at); !word.empty() && word.front() != '-')
                found.insert(word);
        }
        return found;
    }
    std::set<std::string> options_of(const std::string& command) {
        std::set<std::string> found;
        std::istringstream help(run(command + " --help").out);
        for (std::string line; std::getline(help, line);)
            if (line.starts_with("  -"))
                found.merge(options_in(line.substr(0, line.find("  ", 3))));
        return found;
    }
    static constexpr const char* commands[] = {"expand", "list", "test", "find", "formats"};
    const std::string top = HARBOR_TEST_DATA "/../../";
};

TEST_F(Completion, TheManualHasTheOptionsOfAllCommands) {
    auto all = options_of("");
    for (const auto* const command : commands)
        all.merge(options_of(command));
    EXPECT_GT(all.size(), 30u);
    auto manual = support::read_file(top + "docs/harbor.1");
    std::erase(manual, '\\');
    EXPECT_EQ(options_in(manual), all);
    EXPECT_EQ(run("--version >/dev/null", "if command -v man >/dev/null; then man --warnings -l -Tutf8 '" +
                                              top + "docs/harbor.1' >/dev/null; fi;")
                  .err,
              "");
}

// Each shell prints what it completes "harbor $line" with.
struct shell {
    const char* name;
    const char* script;
};

constexpr shell shells[] = {
    {"bash", "source \"$completions/harbor.bash\"; COMP_WORDS=(harbor $line); ((COMP_CWORD = "
             "${#COMP_WORDS[@]} - 1))\n"
             "_harbor; printf '%s\\n' \"${COMPREPLY[@]}\"\n"},
    {"fish", "source $completions/harbor.fish; complete -C \"harbor $line\"\n"},
    // Its completion works on a terminal only. The command ends the shell in it.
    {"zsh",
     "zmodload zsh/zpty; zpty inner 'zsh -f -i'; zpty -w inner 'source setup.zsh'\n"
     "zpty -w -n inner \"harbor $line\"$'\\t\\n'; while zpty -r inner ignored; do :; done; cat found\n"},
};

constexpr char zsh_setup[] = "autoload -Uz compinit && compinit -u -D; source $completions/harbor.zsh\n"
                             "compdef _harbor harbor; harbor() { exit }\n"
                             "compadd() {\n"
                             "    local -a hits\n"
                             "    [[ \" $* \" == *\\ -[OAD]\\ * ]] || builtin compadd -A hits \"$@\"\n"
                             "    print -rl -- $hits >>found; builtin compadd \"$@\"\n"
                             "}\n";

struct CompletionIn : Completion, testing::WithParamInterface<shell> {};

TEST_P(CompletionIn, OffersTheOptionsOfEachCommand) {
    const std::string name = GetParam().name;
    if (run("--version >/dev/null", "command -v " + name + " &&").status != 0)
        GTEST_SKIP() << name << " is not installed";
    support::write_file(place / "setup.zsh", zsh_setup);
    support::write_file(place / "script", GetParam().script);
    const auto offered = [&](const std::string& line) {
        return run("--version >/dev/null", "export completions='" + top + "completions' line='" + line +
                                               "'; " + name + (name == "fish" ? " --no-config" : "") +
                                               " script; rm -f found;");
    };
    for (const std::string command : commands) {
        const auto seen = offered(command + " --");
        EXPECT_EQ(options_in('\n' + seen.out, "\n--"), options_of(command)) << command << seen;
        EXPECT_EQ(seen.err, "");
        EXPECT_NE(offered(command.substr(0, 2)).out.find(command), std::string::npos) << command;
    }
    EXPECT_NE(offered("expand --overwrite n").out.find("newer"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Shells, CompletionIn, testing::ValuesIn(shells),
                         [](const auto& instance) { return instance.param.name; });

} // namespace
