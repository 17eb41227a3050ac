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
    const std::filesystem::path top = std::filesystem::path(HARBOR_TEST_DATA) / "../..";
};

TEST_F(Completion, IsInStepWithTheOptions) {
    auto all = options_of("");
    for (const std::string command : {"expand", "list", "test", "find", "formats"}) {
        const auto own = options_of(command);
        all.insert(own.begin(), own.end());
        const auto offered = run("--version >/dev/null",
                                 "bash -c 'source \"$0\"; COMP_WORDS=(harbor " + command +
                                     " --) COMP_CWORD=2; _harbor; printf \"%s\\n\" \"${COMPREPLY[@]}\"' '" +
                                     (top / "completions/harbor.bash").string() + "';");
        EXPECT_EQ(options_in(offered.out), own) << command;
        EXPECT_EQ(offered.err, "");
    }
    EXPECT_GT(all.size(), 30u);
    auto manual = support::read_file(top / "docs/harbor.1");
    std::erase(manual, '\\');
    EXPECT_EQ(options_in(manual), all);
    EXPECT_EQ(options_in(support::read_file(top / "completions/harbor.zsh")), all);
    std::istringstream fish(support::read_file(top / "completions/harbor.fish"));
    std::set<std::string> completed;
    for (std::string line; std::getline(fish, line);)
        if (line.starts_with("complete "))
            completed.merge(options_in(line, " -l "));
    EXPECT_EQ(completed, all);
    EXPECT_EQ(run("--version >/dev/null", "if command -v man >/dev/null; then man --warnings -l -Tutf8 '" +
                                              (top / "docs/harbor.1").string() + "' >/dev/null; fi;")
                  .err,
              "");
}

} // namespace
