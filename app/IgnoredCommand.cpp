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
    throw Unusable("there is no ignored finding \"" + word + "\" of this book; \"krcontacts ignored\" numbers them");
  }
  return ignored.entries()[number - 1];
}

std::string findings(size_t count) {
  return counted(count, "ignored finding", "ignored findings");
}

/// A book and what is ignored in it.
struct Book {
  /// For people.
  std::string name;
  KRIgnoredFindings ignored;
};

/// Of a book that is known by no more than its identifier, such as "vcard:/home/ann/phone.vcf".
std::string nameOf(const KRString& bookID, Terminal& terminal) {
  const KRAddressBook* book = UserBooks::find(std::string(bookID.view()), terminal);
  if (book != nullptr) return UserBooks::described(*book);
  const std::string ID(bookID.view());
  const size_t end = ID.find_last_of("/:");
  return (end == std::string::npos ? "" : shownText(ID.substr(end + 1)) + " ") + "(" + shownText(ID) + ")";
}

/// The books for which something is remembered. What cannot be read is told of.
std::vector<KRIgnoredFindings> allRemembered(Terminal& terminal) {
  std::vector<KRIgnoredFindings> all;
  for (KRResult<KRIgnoredFindings>& each : KRIgnoredFindings::ofAllBooks()) {
    if (each) {
      all.push_back(*std::move(each));
    } else {
      terminal.say(each.error().sentence);
    }
  }
  return all;
}

/// The book of the word: a file or a book of the list, or the identifier of one for which something is remembered, as
/// its file may be gone since.
Book bookOf(const std::string& word, Terminal& terminal) {
  for (KRResult<KRIgnoredFindings>& each : KRIgnoredFindings::ofAllBooks()) {
    if (each && sameText(each->bookID(), std::string_view(word))) return {nameOf(each->bookID(), terminal), *each};
  }
  const KRRef<KRAddressBook> book = BookOpener::open({word}, false, terminal);
  return {UserBooks::described(*book), Remembering::of(*book)};
}

void writeEntry(JsonWriter& json, const KRIgnoredFindings::Entry& entry) {
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

void writeBook(JsonWriter& json, const KRIgnoredFindings& ignored) {
  json.beginObject();
  json.key("book");
  json.textOrNull(ignored.bookID());
  json.key("ignored");
  json.beginArray();
  for (const KRIgnoredFindings::Entry& entry : ignored.entries()) writeEntry(json, entry);
  json.endArray();
  json.endObject();
}

}  // namespace

IgnoredCommand::IgnoredCommand(CLI::App& app)
    : words_(app.add_subcommand("ignored")),
      list_(words_->add_subcommand("list")),
      forget_(words_->add_subcommand("forget")) {
  list_->fallthrough();
  forget_->fallthrough();
  words_->add_option("BOOK", listed_);
  list_->add_option("BOOK", book_);
  forget_->add_option("BOOK", book_);
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
  if (!listed_.empty()) {
    if (forget_->parsed() || !book_.empty()) throw Unusable("the ignored findings of one book are shown at a time");
    book_ = listed_;
  }
  if (forget_->parsed()) {
    forget(terminal);
  } else {
    list(terminal);
  }
  return ExitCode::Done;
}

void IgnoredCommand::list(Terminal& terminal) const {
  if (!book_.empty()) {
    const Book book = bookOf(book_, terminal);
    if (json_) {
      write(terminal, {book.ignored});
    } else {
      print(terminal, book.name, book.ignored);
    }
    return;
  }
  const std::vector<KRIgnoredFindings> all = allRemembered(terminal);
  if (json_) return write(terminal, all);
  if (all.empty()) {
    terminal.paragraph(
        "No findings are remembered as ignored; \"krcontacts fix --remember\" remembers them with their book.");
  }
  for (const KRIgnoredFindings& each : all) {
    if (&each != &all.front()) terminal.line();
    print(terminal, nameOf(each.bookID(), terminal), each);
  }
}

void IgnoredCommand::print(Terminal& terminal, const std::string& book, const KRIgnoredFindings& ignored) const {
  terminal.paragraph(book + " · " + findings(ignored.entries().size()), Style::Strong, 0, 2);
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

/// One book by itself, or those there are.
void IgnoredCommand::write(Terminal& terminal, const std::vector<KRIgnoredFindings>& all) const {
  JsonWriter json(terminal.out(), JsonWriter::Layout::Lines);
  if (!book_.empty()) {
    writeBook(json, all.front());
  } else {
    json.beginObject();
    json.key("books");
    json.beginArray();
    for (const KRIgnoredFindings& each : all) writeBook(json, each);
    json.endArray();
    json.endObject();
  }
  json.endDocument();
}

void IgnoredCommand::forget(Terminal& terminal) const {
  if (book_.empty()) throw Unusable("of which book? \"krcontacts ignored\" lists all, each with its book");
  if (all_ && !numbers_.empty()) throw Unusable("--all means every ignored finding; none can be numbered beside it");
  if (!all_ && numbers_.empty()) {
    throw Unusable(
        "which ignored finding? (BOOK and its number there, or BOOK --all); \"krcontacts ignored\" lists them");
  }
  Book book = bookOf(book_, terminal);
  const size_t before = book.ignored.entries().size();
  std::vector<KRString> keys;
  if (all_) {
    for (const KRIgnoredFindings::Entry& entry : book.ignored.entries()) keys.push_back(entry.key);
  } else {
    for (const std::string& word : numbers_) keys.push_back(entryOf(word, book.ignored).key);
  }
  for (const KRString& key : keys) book.ignored.forget(key);
  const size_t gone = before - book.ignored.entries().size();
  if (!dryRun_) {
    if (const KRResult<void> saved = book.ignored.save(); !saved) throw Unusable(saved.error().sentence);
  }
  terminal.paragraph((dryRun_ ? "Would forget " : "Forgot ") + findings(gone) + " of " + book.name);
}
