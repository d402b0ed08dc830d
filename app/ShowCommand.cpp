#include "app/ShowCommand.h"

#include <CLI/CLI.hpp>

#include "app/BookOpener.h"
#include "app/DisplayText.h"
#include "app/JsonWriter.h"
#include "app/PersonCard.h"
#include "app/PersonDocument.h"
#include "app/Unusable.h"

namespace {

/// Calls `each` with every contact that is meant, and its place from 0, until the output fails.
template <class Each>
void forContacts(KRAddressBook& book, const PersonFilter& filter, const Output& out, Each each) {
  size_t place = 0;
  for (const IKRPerson& person : book.allPersons()) {
    if (out.failed()) return;
    if (filter.matches(person)) each(person, place);
    ++place;
  }
}

void writeDocument(Terminal& terminal, KRAddressBook& book, const PersonFilter& filter) {
  JsonWriter json(terminal.out(), JsonWriter::Layout::Lines);
  json.beginObject();
  PersonDocument::writeBook(json, book);
  json.key("persons");
  json.beginArray();
  forContacts(book, filter, terminal.out(),
              [&](const IKRPerson& person, size_t place) { PersonDocument::write(json, person, place); });
  json.endArray();
  json.endObject();
  json.endDocument();
}

void printCards(Terminal& terminal, KRAddressBook& book, const PersonFilter& filter) {
  const size_t all = book.allPersonsCount();
  std::string count = std::to_string(all) + (all == 1 ? " contact" : " contacts");
  if (filter.isNarrow()) {
    size_t meant = 0;
    forContacts(book, filter, terminal.out(), [&](const IKRPerson& /*person*/, size_t /*place*/) { ++meant; });
    count = std::to_string(meant) + " of " + count;
  }
  terminal.paragraph(terminal.styled(Style::Strong, shownText(book.name().view())) + " · " + count);
  const size_t digits = std::max<size_t>(std::to_string(all).size(), 2);
  forContacts(book, filter, terminal.out(), [&](const IKRPerson& person, size_t place) {
    terminal.line();
    PersonCard::print(terminal, person, place + 1, digits);
  });
}

}  // namespace

ShowCommand::ShowCommand(CLI::App& app) : words_(app.add_subcommand("show")) {
  words_->add_option("BOOK", files_);
  words_->add_flag("--json", json_);
  words_->add_flag("--verbose", verbose_);
  words_->add_flag("--no-progress", noProgress_);
  filter_.addTo(*words_);
  tables_.addTo(*words_);
}

bool ShowCommand::isChosen() const {
  return words_->parsed();
}

int ShowCommand::run(Terminal& terminal) {
  if (noProgress_) terminal.progress().disable();
  tables_.check(files_);
  const KRRef<KRAddressBook> book = BookOpener::open(files_, verbose_, terminal, tables_);
  filter_.check(*book);
  if (json_) {
    writeDocument(terminal, *book, filter_);
  } else {
    printCards(terminal, *book, filter_);
  }
  return ExitCode::Done;
}
