#include "app/CommandLine.h"

#include <CLI/CLI.hpp>
#include <exception>
#include <memory>
#include <new>
#include <vector>

#include "app/Command.h"
#include "app/HelpText.h"
#include "app/Interrupt.h"
#include "app/IssuesCommand.h"
#include "app/PropertiesCommand.h"
#include "app/ScanCommand.h"
#include "app/SettingsCommand.h"
#include "app/Unusable.h"
#include "app/VersionText.h"
#include "platform/KRHostInfo.h"

namespace {

using Commands = std::vector<std::unique_ptr<Command>>;

Commands declareCommands(CLI::App& app) {
  Commands commands;
  commands.push_back(std::make_unique<ScanCommand>(app));
  commands.push_back(std::make_unique<PropertiesCommand>(app));
  commands.push_back(std::make_unique<IssuesCommand>(app));
  commands.push_back(std::make_unique<SettingsCommand>(app));
  return commands;
}

/// Help for the command that was asked about: the last one on the command line.
std::string helpOf(const CLI::App& app) {
  const std::vector<CLI::App*> chosen = app.get_subcommands();
  return chosen.empty() ? HelpText::of(&app) : helpOf(*chosen.front());
}

/// The words that ask for the page of the command that was begun.
std::string helpWords(const CLI::App& app) {
  const std::vector<CLI::App*> chosen = app.get_subcommands();
  return "krcontacts " + (chosen.empty() ? "" : chosen.front()->get_name() + " ") + "--help";
}

int parseAndRun(Terminal& terminal, int argc, char** argv) {
  CLI::App app("Finds what is wrong in an address book", "krcontacts");
  app.formatter(std::make_shared<HelpText::Formatter>());
  app.set_help_flag("-h,--help");
  bool wantsVersion = false;
  app.add_flag("--version", wantsVersion);
  const Commands commands = declareCommands(app);
  app.require_subcommand(0, 1);

  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    terminal.out().write(helpOf(app));
    terminal.out().finish();
    return ExitCode::Done;
  } catch (const CLI::ParseError& error) {
    terminal.say(std::string(error.what()) + " (\"" + helpWords(app) + "\" tells what can be asked for)");
    return ExitCode::Unusable;
  }

  int code = ExitCode::Unusable;
  bool ran = false;
  if (wantsVersion) {
    terminal.out().write(versionText());
    code = ExitCode::Done;
    ran = true;
  }
  for (const auto& command : commands) {
    if (ran || !command->isChosen()) continue;
    code = command->run(terminal);
    ran = true;
  }
  if (!ran) {
    writeAll(2, HelpText::of(&app));
    return ExitCode::Unusable;
  }
  terminal.progress().clear();
  terminal.out().finish();
  return code;
}

}  // namespace

int CommandLine::run(int argc, char** argv) {
  Interrupt::install();
  // Settings are found again under whatever name the program's file is given.
  KRHostInfo::setIdentifier("krcontacts"_kr);
  Terminal terminal;
  try {
    return parseAndRun(terminal, argc, argv);
  } catch (const Unusable& error) {
    terminal.say(error.what());
  } catch (const std::bad_alloc&) {
    terminal.say("there is not enough memory");
  } catch (const std::exception& error) {
    terminal.say(error.what());
  }
  return ExitCode::Unusable;
}
