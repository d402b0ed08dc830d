#include "app/IgnoredCommand.h"

#include <CLI/CLI.hpp>
#include <charconv>

#include "app/BookOpener.h"
#include "app/DisplayText.h"
#include "app/IssueNames.h"
#include "app/JsonWriter.h"
#include "app/Remembering.h"
#include "app/Unusable.h"
#include "app/UserBooks.h"

namespace {

const KRIgnoredFindings::Entry& entryOf(const std::string& word, const KRIgnoredFindings& ignored) {
  size_t number = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  const bool isNumber = error == std::errc() && end == word.data() + word.size();
  if (!isNumber || number == 0 || number > ignored.entries().size()) {
    throw Unusable("there is no ignored finding \"" + word + "\"; \"krcontacts ignored list\" numbers them");
  }
  return ignored.entries()[number - 1];
}

std::string findings(size_t count) {
  return counted(count, "ignored finding", "ignored findings");
}

}  // namespace

IgnoredCommand::IgnoredCommand(CLI::App& app)
    : words_(app.add_subcommand("ignored")),
      list_(words_->add_subcommand("list")),
      forget_(words_->add_subcommand("forget")) {
  list_->fallthrough();
  forget_->fallthrough();
  list_->add_option("BOOK", book_);
  forget_->add_option("BOOK", book_)->required();
  forget_->add_option("NUMBER", numbers_);
  forget_->add_flag("--all", all_);
  forget_->add_flag("--dry-run", dryRun_);
  words_->add_flag("--json", json_);
  words_->require_subcommand(0, 1);
}

bool IgnoredCommand::isChosen() const {
  return words_->parsed();
}

int IgnoredCommand::run(Terminal& terminal) {
  const KRRef<KRAddressBook> book =
      BookOpener::open(book_.empty() ? std::vector<std::string>() : std::vector<std::string>{book_}, false, terminal);
  KRIgnoredFindings ignored = Remembering::of(*book);
  if (forget_->parsed()) {
    forget(terminal, *book, ignored);
  } else if (json_) {
    write(terminal, *book, ignored);
  } else {
    list(terminal, *book, ignored);
  }
  return ExitCode::Done;
}

void IgnoredCommand::list(Terminal& terminal, const KRAddressBook& book, const KRIgnoredFindings& ignored) const {
  terminal.paragraph(shownText(book.name().view()) + " · " + findings(ignored.entries().size()), Style::Strong);
  const size_t digits = std::to_string(ignored.entries().size()).size();
  size_t number = 0;
  for (const KRIgnoredFindings::Entry& entry : ignored.entries()) {
    const std::string figure = std::to_string(++number);
    terminal.paragraph(padding(figure, digits) + figure + "  " + shownText(entry.persons.view()) + " · " +
                           IssueNames::shortName(entry.issueName) + " · since " + shownText(entry.date.view()),
                       Style::Plain, 0, digits + 2);
    terminal.paragraph(shownText(entry.describe.view()), Style::Faint, digits + 2);
  }
}

void IgnoredCommand::write(Terminal& terminal, const KRAddressBook& book, const KRIgnoredFindings& ignored) const {
  JsonWriter json(terminal.out(), JsonWriter::Layout::Lines);
  json.beginObject();
  json.key("book");
  json.textOrNull(book.ID());
  json.key("ignored");
  json.beginArray();
  for (const KRIgnoredFindings::Entry& entry : ignored.entries()) {
    json.beginObject(JsonWriter::Layout::OneLine);
    json.key("key");
    json.textOrNull(entry.key);
    json.key("date");
    json.textOrNull(entry.date);
    json.key("issue");
    json.textOrNull(entry.issueName);
    json.key("persons");
    json.textOrNull(entry.persons);
    json.key("describe");
    json.textOrNull(entry.describe);
    json.endObject();
  }
  json.endArray();
  json.endObject();
  json.endDocument();
}

void IgnoredCommand::forget(Terminal& terminal, const KRAddressBook& book, KRIgnoredFindings& ignored) const {
  if (all_ && !numbers_.empty()) throw Unusable("--all means every ignored finding; none can be numbered beside it");
  if (!all_ && numbers_.empty()) throw Unusable("which ignored finding? (its number, or --all)");
  const size_t before = ignored.entries().size();
  std::vector<KRString> keys;
  if (all_) {
    for (const KRIgnoredFindings::Entry& entry : ignored.entries()) keys.push_back(entry.key);
  } else {
    for (const std::string& word : numbers_) keys.push_back(entryOf(word, ignored).key);
  }
  for (const KRString& key : keys) ignored.forget(key);
  const size_t gone = before - ignored.entries().size();
  if (!dryRun_) {
    if (const KRResult<void> saved = ignored.save(); !saved) throw Unusable(saved.error().sentence);
  }
  terminal.paragraph((dryRun_ ? "Would forget " : "Forgot ") + findings(gone) + " of " + UserBooks::described(book));
}
