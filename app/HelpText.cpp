#include "app/HelpText.h"

#include "app/HelpPages.h"

std::string HelpText::of(const CLI::App* command) {
  // The verbs of a command are explained on the command's own page.
  for (const CLI::App* each = command; each != nullptr; each = each->get_parent()) {
    for (const std::span<const HelpPage> pages :
         {HelpPages::ofContacts(), HelpPages::ofBooks(), HelpPages::ofFixes()}) {
      for (const HelpPage& page : pages) {
        if (page.command == each->get_name()) return std::string(page.text);
      }
    }
  }
  return {};
}

std::string HelpText::Formatter::make_help(const CLI::App* command, std::string /*name*/,
                                           CLI::AppFormatMode /*mode*/) const {
  return of(command);
}
