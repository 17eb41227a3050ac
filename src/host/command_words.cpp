#include "host/command_words.h"

#include "host/selection.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace host {

namespace {

constexpr command_word words[] = {
    {options::command::expand, "expand", "x"},       {options::command::list, "list", "l"},
    {options::command::test, "test", "t"},           {options::command::find, "find", nullptr},
    {options::command::formats, "formats", nullptr},
};

/// What other programs call these commands.
constexpr struct {
    const char* word;
    options::command meaning;
} synonyms[] = {
    {"extract", options::command::expand},    {"unpack", options::command::expand},
    {"uncompress", options::command::expand}, {"decompress", options::command::expand},
    {"unzip", options::command::expand},      {"e", options::command::expand},
    {"ls", options::command::list},           {"dir", options::command::list},
    {"show", options::command::list},         {"view", options::command::list},
    {"check", options::command::test},        {"verify", options::command::test},
    {"search", options::command::find},       {"scan", options::command::find},
};

/// How many letters must be inserted, removed or replaced to turn one word into the other.
std::size_t distance(std::string_view one, std::string_view other) {
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < one.size(); ++i) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 0; j < other.size(); ++j) {
            const auto replaced = diagonal + (one[i] == other[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

/// The command that may have been meant; null if none is similar.
const command_word* guess(const std::string& given) {
    const auto word = lower_case(given);
    for (const auto& synonym : synonyms)
        if (word == synonym.word)
            return &word_of(synonym.meaning);
    std::vector<std::string> known;
    for (const auto& each : words)
        known.emplace_back(each.name);
    return find_command(most_similar(word, known));
}

} // namespace

std::string most_similar(std::string_view word, const std::vector<std::string>& known) {
    std::string best;
    std::size_t least = 3;
    for (const auto& each : known)
        if (const auto steps = word.size() > 32 ? least : distance(word, each); steps < least) {
            least = steps;
            best = each;
        }
    return best;
}

std::string quoted(const std::string& argument) {
    const auto plain = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               std::string_view("-_./,+@%=:").find(c) != std::string_view::npos;
    };
    if (!argument.empty() && std::all_of(argument.begin(), argument.end(), plain))
        return argument;
    std::string text = "'";
    for (const char c : argument)
        text += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return text + '\'';
}

const command_word& word_of(options::command meaning) {
    return *std::find_if(std::begin(words), std::end(words),
                         [&](const command_word& each) { return each.meaning == meaning; });
}

const command_word* find_command(std::string_view word) {
    for (const auto& each : words)
        if (word == each.name || (each.short_form && word == each.short_form))
            return &each;
    return nullptr;
}

std::string unknown_command_text(const std::string& word) {
    if (const auto* const meant = guess(word))
        return std::string(word).append(": no such command; did you mean ").append(meant->name).append("?");
    return std::string(word).append(": neither a command nor a file");
}

std::string missing_archive_text(const std::string& archive, const std::string& argument) {
    return std::string(argument)
        .append(": no such file on disk. Names of files in an archive go behind --: ")
        .append(quoted(archive))
        .append(" -- ")
        .append(quoted(argument));
}

} // namespace host
