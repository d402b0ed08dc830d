#include "app/BooksDocument.h"

#include <string>
#include <unordered_map>

#include "app/DisplayText.h"
#include "app/UserBooks.h"
#include "contacts/stores/KRUnavailableBook.h"

namespace {

using Counts = std::unordered_map<const KRGroup*, size_t>;

/// Why the book cannot be used, or null.
const KRError* errorOf(const KRResult<void>& loaded, const KRAddressBook& book) {
  const auto* unavailable = dynamic_cast<const KRUnavailableBook*>(&book);
  if (unavailable != nullptr) return &unavailable->error();
  return loaded ? nullptr : &loaded.error();
}

/// The trash is read when it is made; of other books the list needs no contacts. One that seems to hold none is read,
/// as a book whose contacts cannot be counted seems so too, and reading tells why.
KRResult<void> known(KRAddressBook& book) {
  return UserBooks::isTrash(book) || book.allPersonsCount() == 0 ? book.load() : KRResult<void>();
}

Counts membersOf(KRAddressBook& book) {
  Counts counts;
  for (const IKRPerson& person : book.allPersons()) {
    for (const KRRef<KRGroup>& group : person.parentGroups()) ++counts[group.get()];
  }
  return counts;
}

void writeMembers(JsonWriter& json, KRAddressBook& book, bool isDefault, const KRError* error) {
  json.key("id");
  json.textOrNull(book.ID());
  json.key("name");
  json.textOrNull(book.name());
  json.key("kind");
  json.textOrNull(book.kind());
  json.key("place");
  json.textOrNull(book.place());
  json.key("isDefault");
  json.truth(isDefault);
  json.key("personCount");
  if (error != nullptr) {
    json.null();
  } else {
    json.whole(book.allPersonsCount());
  }
  json.key("error");
  if (error != nullptr) {
    json.text(error->sentence);
  } else {
    json.null();
  }
}

void printPart(Terminal& terminal, std::string_view label, std::string_view text) {
  const std::string start = std::string(label) + padding(label, 7);
  terminal.paragraph(start + shownText(text), Style::Plain, 2, 7);
}

}  // namespace

void BooksDocument::writeAll(Output& out, KRAddressBookManager& manager) {
  JsonWriter json(out, JsonWriter::Layout::Lines);
  const KRAddressBook* standard = manager.defaultAddressBook();
  json.beginObject();
  json.key("books");
  json.beginArray();
  for (KRAddressBook& book : manager.addressBookArray()) {
    const KRResult<void> loaded = known(book);
    json.beginObject(JsonWriter::Layout::OneLine);
    writeMembers(json, book, &book == standard && !UserBooks::isTrash(book), errorOf(loaded, book));
    json.endObject();
  }
  json.endArray();
  json.endObject();
  json.endDocument();
}

void BooksDocument::writeOne(Output& out, KRAddressBook& book, bool isDefault) {
  JsonWriter json(out, JsonWriter::Layout::Lines);
  const KRResult<void> loaded = book.load();
  json.beginObject();
  writeMembers(json, book, isDefault, errorOf(loaded, book));
  json.key("groups");
  json.beginArray();
  const Counts counts = membersOf(book);
  for (const KRRef<KRGroup>& group : book.rootGroups()) {
    json.beginObject(JsonWriter::Layout::OneLine);
    json.key("id");
    json.textOrNull(group->uniqueId());
    json.key("name");
    json.textOrNull(group->name());
    json.key("personCount");
    const auto count = counts.find(group.get());
    json.whole(count != counts.end() ? count->second : size_t{0});
    json.endObject();
  }
  json.endArray();
  json.endObject();
  json.endDocument();
}

void BooksDocument::print(Terminal& terminal, KRAddressBook& book, bool isDefault) {
  const KRResult<void> loaded = known(book);
  const KRError* error = errorOf(loaded, book);
  std::string head = shownText(book.name().view());
  if (error == nullptr) {
    const size_t count = book.allPersonsCount();
    head += " · " + std::to_string(count) + (count == 1 ? " contact" : " contacts");
  }
  if (isDefault) head += " · default";
  terminal.paragraph(head, Style::Strong);
  if (error != nullptr) terminal.paragraph("cannot be opened: " + shownText(error->sentence), Style::Warning, 2, 2);
  printPart(terminal, "ID", book.ID().view());
  printPart(terminal, "kind", book.kind().view());
  if (const KRString place = book.place(); !place.isEmpty()) printPart(terminal, "place", place.view());
}

void BooksDocument::printGroups(Terminal& terminal, KRAddressBook& book) {
  const std::vector<KRRef<KRGroup>> groups = book.rootGroups();
  if (groups.empty()) return;
  const Counts counts = membersOf(book);
  for (const KRRef<KRGroup>& group : groups) {
    const auto found = counts.find(group.get());
    const size_t count = found != counts.end() ? found->second : 0;
    const std::string_view label = group == groups.front() ? "groups" : "";
    printPart(terminal, label, std::string(group->name().view()) + " (" + std::to_string(count) + ")");
  }
}
