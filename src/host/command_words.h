#pragma once

#include "host/command_line.h"

#include <string>
#include <string_view>
#include <vector>

namespace host {

/// How a command is called.
struct command_word {
    options::command meaning;
    const char* name;
    const char* short_form; ///< null if it has none
};

const command_word& word_of(options::command meaning);
/// The command called `word`, in full or in short; null if there is none.
const command_word* find_command(std::string_view word);
/// The word of `known` that may have been meant by `word`; empty if none is similar.
std::string most_similar(std::string_view word, const std::vector<std::string>& known);
/// As a shell takes it for one word: in quotes if that is needed.
std::string quoted(const std::string& argument);
/// What is wrong with `word` where a command or an archive is expected, and what may have been meant.
std::string unknown_command_text(const std::string& word);
/// What is wrong with an argument that is no file on disk, behind the archive `archive`.
std::string missing_archive_text(const std::string& archive, const std::string& argument);

} // namespace host
