#pragma once

#include <CLI/CLI.hpp>
#include <string>

/// What `--help` shows. Written by hand: a help page is read by people, and lists of options alone do not tell them
/// what a command is for.
namespace HelpText {

/// The page of a command (or of the program itself), ending with a line end.
std::string of(const CLI::App* command);

/// Lets the parser show these pages.
class Formatter : public CLI::FormatterBase {
 public:
  std::string make_help(const CLI::App* command, std::string name, CLI::AppFormatMode mode) const override;
};

}  // namespace HelpText
