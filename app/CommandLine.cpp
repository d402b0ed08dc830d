#include "app/CommandLine.h"

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <exception>
#include <memory>
#include <new>
#include <string_view>
#include <vector>

#include "app/ApplyCommand.h"
#include "app/BooksCommand.h"
#include "app/Command.h"
#include "app/ConvertCommand.h"
#include "app/ExportCommand.h"
#include "app/FixCommand.h"
#include "app/HelpText.h"
#include "app/IgnoredCommand.h"
#include "app/ImportCommand.h"
#include "app/Interrupt.h"
#include "app/IssuesCommand.h"
#include "app/LoadCommand.h"
#include "app/MappingsCommand.h"
#include "app/MergeCommand.h"
#include "app/PlanCommand.h"
#include "app/PropertiesCommand.h"
#include "app/ScanCommand.h"
#include "app/SettingsCommand.h"
#include "app/ShowCommand.h"
#include "app/TrashCommand.h"
#include "app/UndoCommand.h"
#include "app/Unusable.h"
#include "app/VersionText.h"
#include "contacts/undo/KRUndoRecorder.h"
#include "platform/KRHostInfo.h"

namespace {

using Commands = std::vector<std::unique_ptr<Command>>;

Commands declareCommands(CLI::App& app) {
  Commands commands;
  commands.push_back(std::make_unique<ScanCommand>(app));
  commands.push_back(std::make_unique<ShowCommand>(app));
  commands.push_back(std::make_unique<LoadCommand>(app));
  commands.push_back(std::make_unique<ConvertCommand>(app));
  commands.push_back(std::make_unique<BooksCommand>(app));
  commands.push_back(std::make_unique<ImportCommand>(app));
  commands.push_back(std::make_unique<MappingsCommand>(app));
  commands.push_back(std::make_unique<ExportCommand>(app));
  commands.push_back(std::make_unique<FixCommand>(app));
  commands.push_back(std::make_unique<MergeCommand>(app));
  commands.push_back(std::make_unique<PlanCommand>(app));
  commands.push_back(std::make_unique<ApplyCommand>(app));
  commands.push_back(std::make_unique<IgnoredCommand>(app));
  commands.push_back(std::make_unique<TrashCommand>(app));
  commands.push_back(std::make_unique<UndoCommand>(app));
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

/// The command line as its undo record shows it: without the program, words of several in quotes.
std::string titleOf(int argc, char** argv) {
  std::string title;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    const bool isPlain = !word.empty() && word.find_first_of(" \t\n\"'") == std::string::npos;
    title += (title.empty() ? "" : " ") + (isPlain ? word : '"' + word + '"');
  }
  return title;
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
    const KRUndoRecorder recorder{std::string_view(titleOf(argc, argv))};
    code = command->run(terminal);
    ran = true;
    if (const KRString failure = KRUndoRecorder::failure(); !failure.isNothing()) {
      terminal.say("what was changed cannot be undone: " + std::string(failure.view()));
    }
  }
  if (!ran) {
    writeAll(2, HelpText::of(&app));
    return ExitCode::Unusable;
  }
  terminal.progress().clear();
  terminal.out().finish();
  return code;
}

constexpr std::string_view kNoMemory = "there is not enough memory";

/// For what a thread of the engine throws, which nobody can catch: a run of a find that gets no memory says so and ends
/// the process. Nothing is being written then.
[[noreturn]] void endWithoutMemory() noexcept {
  try {
    if (const std::exception_ptr thrown = std::current_exception()) std::rethrow_exception(thrown);
  } catch (const std::bad_alloc&) {
    for (const std::string_view text : {std::string_view("krcontacts: "), kNoMemory, std::string_view("\n")}) {
      writeAll(2, text);
    }
    std::_Exit(ExitCode::Unusable);
  } catch (...) {
    std::abort();
  }
  std::abort();
}

}  // namespace

int CommandLine::run(int argc, char** argv) {
  Interrupt::install();
  std::set_terminate(endWithoutMemory);
  // Settings are found again under whatever name the program's file is given.
  KRHostInfo::setIdentifier("krcontacts"_kr);
  Terminal terminal;
  try {
    return parseAndRun(terminal, argc, argv);
  } catch (const Unusable& error) {
    terminal.say(error.what());
  } catch (const std::bad_alloc&) {
    terminal.say(std::string(kNoMemory));
  } catch (const std::exception& error) {
    terminal.say(error.what());
  }
  return ExitCode::Unusable;
}
