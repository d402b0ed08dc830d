#include "app/ExportCommand.h"

#include <CLI/CLI.hpp>

#include "app/BookOpener.h"
#include "app/PersonText.h"
#include "app/Unusable.h"
#include "app/UserBooks.h"

ExportCommand::ExportCommand(CLI::App& app) : words_(app.add_subcommand("export")) {
  words_->add_option("BOOK", book_);
  target_.addTo(*words_);
  words_->add_flag("--verbose", verbose_);
  words_->add_flag("--no-progress", noProgress_);
  words_->add_flag("--raw-cells", rawCells_);
  filter_.addTo(*words_);
}

bool ExportCommand::isChosen() const {
  return words_->parsed();
}

int ExportCommand::run(Terminal& terminal) {
  if (noProgress_) terminal.progress().disable();
  target_.check();
  if (rawCells_ && !target_.isTable()) throw Unusable("--raw-cells is about delimited files, named .csv");
  UserBooks::checkApart(target_.path(), book_);
  std::vector<std::string> words;
  if (!book_.empty()) words.push_back(book_);
  const KRRef<KRAddressBook> book = BookOpener::open(words, verbose_, terminal);
  UserBooks::checkApart(target_.path(), *book);
  filter_.check(*book);
  const BookExport::Result result = write(*book, terminal);
  terminal.progress().clear();
  target_.tellLosses(terminal, result.losses, verbose_);
  target_.finish(terminal);
  target_.tell(terminal, {result.persons, result.groups, {}, UserBooks::described(*book)});
  return ExitCode::Done;
}

BookExport::Result ExportCommand::write(KRAddressBook& book, Terminal& terminal) {
  const auto put = [&](std::string_view piece) { target_.put(terminal, piece); };
  const auto progress = [&](double percent) { terminal.progress().show("Exporting", percent); };
  if (target_.isTable()) return BookExport::writeTable(book, filter_, rawCells_, put, progress);
  const auto loss = [&](const IKRPerson& person, const std::string& names) {
    if (verbose_) terminal.say(personText(person) + ": " + names);
  };
  return BookExport::write(book, filter_, target_.version(), put, loss, progress);
}
