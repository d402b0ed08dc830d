#pragma once

#include <span>
#include <string_view>

/// The help page of one command, or of the program itself.
struct HelpPage {
  std::string_view command;
  std::string_view text;
};

/// All pages, in groups: each has a file of its own.
namespace HelpPages {

/// The program itself, and the commands that look at contacts and choose what counts as an issue.
std::span<const HelpPage> ofContacts();
/// The commands that keep contacts, and bring back what was there.
std::span<const HelpPage> ofBooks();
/// The commands that fix.
std::span<const HelpPage> ofFixes();

}  // namespace HelpPages
