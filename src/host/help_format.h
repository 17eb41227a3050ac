#pragma once

#include <CLI/CLI.hpp>

namespace host {

/// How the program's help is printed: usage, purpose, options by group, and the footer, in lines of at most
/// 80 columns.
class help_format : public CLI::Formatter {
public:
    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override;
};

} // namespace host
