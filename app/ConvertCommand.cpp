#include "app/ConvertCommand.h"

#include <CLI/CLI.hpp>

#include "app/BookExport.h"
#include "app/CardConversion.h"
#include "app/DisplayText.h"
#include "app/Unusable.h"

ConvertCommand::ConvertCommand(CLI::App& app) : words_(app.add_subcommand("convert")) {
  words_->add_option("FILE", file_)->required();
  target_.addTo(*words_);
  tables_.addTo(*words_);
  words_->add_flag("--verbose", verbose_);
  words_->add_flag("--no-progress", noProgress_);
}

bool ConvertCommand::isChosen() const {
  return words_->parsed();
}

int ConvertCommand::run(Terminal& terminal) {
  if (noProgress_) terminal.progress().disable();
  target_.check();
  tables_.check(file_, target_.isTable());
  const BookOpener::Cards cards = BookOpener::openCards(file_, verbose_, terminal, tables_);
  if (target_.isTable()) {
    writeTable(*cards.book, terminal);
  } else {
    writeCards(cards, terminal);
  }
  return ExitCode::Done;
}

void ConvertCommand::writeTable(KRVCardBook& book, Terminal& terminal) {
  const BookExport::Result result = BookExport::writeTable(
      book, {}, tables_.hasRawCells(), [&](std::string_view piece) { target_.put(terminal, piece); },
      [&](double percent) { terminal.progress().show("Converting", percent); });
  terminal.progress().clear();
  const size_t groups = book.lastSummary().groups;
  if (groups > 0) terminal.say("a delimited file cannot hold " + counted(groups, "group", "groups"));
  target_.finish(terminal);
  target_.tell(terminal, {result.persons});
}

void ConvertCommand::writeCards(const BookOpener::Cards& cards, Terminal& terminal) {
  // Rows are no cards that could be copied.
  if (TableOptions::isTable(file_)) target_.useVersionUnlessGiven(KRVCardVersion::V30);
  std::string written;
  std::string_view bytes = cards.bytes.view();
  if (const std::optional<KRVCardVersion> version = target_.version()) {
    terminal.progress().show("Converting");
    written = CardConversion::converted(*cards.book, *version);
    const std::vector<CardConversion::Loss> losses = CardConversion::losses(*cards.book, written);
    if (verbose_) {
      for (const CardConversion::Loss& loss : losses) terminal.say(loss.person + ": " + loss.properties);
    }
    target_.tellLosses(terminal, losses.size(), verbose_);
    terminal.progress().clear();
    bytes = written;
  }
  target_.write(terminal, bytes);
  target_.tell(terminal, {cards.book->allPersonsCount(), cards.book->lastSummary().groups, ", copied as they are"});
}
