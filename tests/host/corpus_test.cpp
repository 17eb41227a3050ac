#include "support/program.h"

#include <fstream>
#include <map>
#include <set>
#include <sstream>

// The cabinets in tests/data, which another writer made. SHA256SUMS has the files that come out of each.

namespace {

/// A line of CASES.tsv.
struct expected {
    std::string statuses = "0"; ///< those that are right, with '|' between them
    std::string compared =
        "all"; ///< "all": these files. "digests": these bytes. "whole": these, others are named
    std::string options;
    std::string told; ///< what the standard error contains, with '|' between them
};

/// By the cabinet's path below tests/data.
std::map<std::string, expected> all_cases() {
    std::map<std::string, expected> cases;
    const std::filesystem::path data = HARBOR_TEST_DATA;
    for (const auto& entry : std::filesystem::directory_iterator(data))
        if (const auto name = entry.path().filename().string(); name.ends_with(".cab"))
            cases[name] = {};
    std::erase_if(cases, [](const auto& each) {
        return each.first.starts_with("refuse-") || each.first.starts_with("set-");
    });
    std::ifstream table(data / "cases/CASES.tsv");
    std::string line;
    for (std::getline(table, line); std::getline(table, line);) {
        std::istringstream columns(line);
        std::string name;
        expected row;
        for (auto* const text : {&name, &row.statuses, &row.compared, &row.options, &row.told})
            std::getline(columns, *text, '\t');
        cases[std::filesystem::exists(data / "cases" / name) ? "cases/" + name : name] = row;
    }
    return cases;
}

using digests = std::map<std::string, std::string>; ///< by path

/// What `sha256sum` printed, as far as paths begin with `prefix`, without that.
digests parse(const std::string& sums, const std::string& prefix) {
    constexpr std::size_t digits = 64;
    digests result;
    std::istringstream lines(sums);
    for (std::string line; std::getline(lines, line);)
        if (const auto path = line.substr(digits + 2); path.starts_with(prefix))
            result[path.substr(prefix.size())] = line.substr(0, digits);
    return result;
}

std::multiset<std::string> without_names(const digests& files) {
    std::multiset<std::string> result;
    for (const auto& [path, digest] : files)
        result.insert(digest);
    return result;
}

struct Corpus : support::program {};

TEST_F(Corpus, ComesOutAsItsWriterMadeIt) {
    const std::string data = HARBOR_TEST_DATA "/";
    const auto sums = support::read_file(data + "SHA256SUMS") + support::read_file(data + "cases/SHA256SUMS");
    const auto cases = all_cases();
    EXPECT_GT(cases.size(), 50u);
    for (const auto& [path, wanted] : cases) {
        SCOPED_TRACE(path);
        const auto name = path.substr(path.rfind('/') + 1);
        const auto seen = run("expand -q '" + data + path + "' -C out " + wanted.options +
                                  "; status=$?; cd out && find . -type f -exec sha256sum {} +; exit $status",
                              "rm -rf out;");
        EXPECT_NE(wanted.statuses.find(std::to_string(seen.status)), std::string::npos) << seen;
        EXPECT_EQ(seen.err.empty(), seen.status == 0) << seen;
        const auto files = parse(seen.out, "./");
        const auto right = parse(sums, name + '/');
        if (wanted.compared == "digests") {
            EXPECT_EQ(without_names(files), without_names(right));
        } else {
            for (const auto& [file, digest] : right)
                EXPECT_EQ(files.count(file) ? files.at(file) : "", digest) << file;
            for (const auto& [file, digest] : files)
                EXPECT_TRUE(right.count(file) ||
                            (wanted.compared == "whole" && seen.err.find(file) != std::string::npos))
                    << file << ": " << seen;
        }
        std::istringstream words(wanted.told);
        for (std::string word; std::getline(words, word, '|');)
            EXPECT_NE(seen.err.find(word), std::string::npos) << word << ": " << seen;
    }
}

} // namespace
