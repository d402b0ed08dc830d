#include "app/TrashCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <iostream>

#include "app/BookOpener.h"
#include "app/DisplayText.h"
#include "app/EqualPersons.h"
#include "app/JsonWriter.h"
#include "app/PersonCard.h"
#include "app/PersonDocument.h"
#include "app/PersonText.h"
#include "app/Unusable.h"
#include "app/UserBooks.h"
#include "contacts/model/KRSaveScope.h"
#include "contacts/undo/KRUndoTurn.h"
#include "contacts/vcard/KRVCardBook.h"
#include "platform/KRFile.h"

namespace {

std::string contacts(size_t count) {
  return counted(count, "contact", "contacts");
}

KRTrashAddressBook& trash() {
  return *KRTrashAddressBook::ShareTrashAddressBook();
}

/// Throws when the trash cannot be read: what it holds is then not known, and is not changed.
void checkTrash() {
  if (const KRResult<void> loaded = trash().load(); !loaded) throw Unusable(loaded.error().sentence);
}

/// The place of a person in the trash from its number, from 1; or nothing.
std::optional<size_t> placeOf(const std::string& word) {
  size_t number = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  const bool isNumber = error == std::errc() && end == word.data() + word.size();
  if (!isNumber || number == 0 || number > trash().allPersonsCount()) return std::nullopt;
  return number - 1;
}

KRRef<KRTempPerson> trashed(IKRPerson& person) {
  return KRRef<KRTempPerson>(dynamic_cast<KRTempPerson*>(&person));
}

/// The book that the person came from as people know it: by its name where it is in the list.
std::string origin(const KRTempPerson& person) {
  const KRAddressBook* book = trash().addressBookofPersonFrom(&person);
  if (book != nullptr) return shownText(book->name().view());
  const KRString ID = person.fromID();
  return ID.isEmpty() ? "no book" : shownText(ID.view());
}

/// The file or folder that the person came from, when it is still there though in no list; or null.
KRRef<KRAddressBook> bookAtItsPlace(const KRTempPerson& person, Terminal& terminal) {
  const KRString path = KRVCardBook::fileOfID(person.fromID());
  const KRFile::Kind kind = KRFile::kind(path);
  if (kind != KRFile::Kind::Regular && kind != KRFile::Kind::Folder) return {};
  return BookOpener::openWritable(std::string(path.view()), terminal);
}

/// Puts a person back; how many of its groups are gone from the book.
size_t putBack(KRStoredBook& book, const KRTempPerson& person, const KRRef<ABPerson>& restored) {
  book.addPerson(restored.get());
  size_t gone = 0;
  std::vector<KRRef<KRGroup>> groups;
  for (const KRString& ID : person.groupIDs().value_or(KRStringList())) {
    KRRef<KRGroup> group = book.groupWithID(ID);
    if (group) {
      groups.push_back(std::move(group));
    } else {
      ++gone;
    }
  }
  if (!groups.empty()) book.setGroups(*restored, std::move(groups));
  return gone;
}

}  // namespace

TrashCommand::TrashCommand(CLI::App& app)
    : words_(app.add_subcommand("trash")),
      list_(addVerb("list")),
      show_(addVerb("show")),
      restore_(addVerb("restore")),
      remove_(addVerb("remove")),
      clear_(addVerb("clear")) {
  filter_.addTo(*list_);
  for (CLI::App* verb : {show_, restore_, remove_}) verb->add_option("PERSON", persons_);
  restore_->add_option("--into", into_);
  restore_->add_flag("--all", all_);
  restore_->add_flag("--again", again_);
  clear_->add_flag("--yes", yes_);
  for (CLI::App* verb : {restore_, remove_, clear_}) verb->add_flag("--dry-run", dryRun_);
  words_->add_flag("--json", json_);
  words_->require_subcommand(0, 1);
}

CLI::App* TrashCommand::addVerb(const char* name) {
  CLI::App* verb = words_->add_subcommand(name);
  verb->fallthrough();
  return verb;
}

bool TrashCommand::isChosen() const {
  return words_->parsed();
}

int TrashCommand::run(Terminal& terminal) {
  UserBooks::manager(terminal);
  checkTrash();
  if (restore_->parsed()) return restore(terminal);
  if (remove_->parsed()) {
    remove(terminal);
  } else if (clear_->parsed()) {
    clear(terminal);
  } else if (show_->parsed()) {
    show(terminal);
  } else {
    list(terminal);
  }
  return ExitCode::Done;
}

// Looking

void TrashCommand::list(Terminal& terminal) {
  filter_.check(trash());
  size_t place = 0;
  if (json_) {
    JsonWriter json(terminal.out(), JsonWriter::Layout::Lines);
    json.beginObject();
    json.key("persons");
    json.beginArray();
    for (IKRPerson& person : trash().allPersons()) {
      ++place;
      const KRRef<KRTempPerson> each = trashed(person);
      if (!each || !filter_.matches(person)) continue;
      json.beginObject(JsonWriter::Layout::OneLine);
      json.key("number");
      json.whole(place);
      json.key("id");
      json.textOrNull(each->ID());
      json.key("showName");
      json.textOrNull(each->showName());
      json.key("from");
      json.textOrNull(each->fromID());
      json.key("groups");
      json.beginArray();
      for (const KRString& ID : each->groupIDs().value_or(KRStringList())) json.textOrNull(ID);
      json.endArray();
      json.endObject();
    }
    json.endArray();
    json.endObject();
    json.endDocument();
    return;
  }
  const size_t digits = std::to_string(trash().allPersonsCount()).size();
  terminal.paragraph("Trash · " + contacts(trash().allPersonsCount()), Style::Strong);
  bool isFound = false;
  for (IKRPerson& person : trash().allPersons()) {
    ++place;
    const KRRef<KRTempPerson> each = trashed(person);
    if (!each || !filter_.matches(person)) continue;
    isFound = true;
    const std::string number = std::to_string(place);
    terminal.paragraph(
        std::string(digits - number.size(), ' ') + number + "  " + personText(person) + " · from " + origin(*each),
        Style::Plain, 0, digits + 2);
  }
  if (!isFound && filter_.isNarrow()) terminal.paragraph("None of them is what was asked for");
}

void TrashCommand::show(Terminal& terminal) {
  const Persons persons = persons_.empty() ? meant() : named();
  const auto placeIn = [](const KRTempPerson& person) { return trash().allPersons().indexOf(&person); };
  if (json_) {
    JsonWriter json(terminal.out(), JsonWriter::Layout::Lines);
    json.beginObject();
    json.key("persons");
    json.beginArray();
    for (const auto& person : persons) PersonDocument::write(json, *person, placeIn(*person));
    json.endArray();
    json.endObject();
    json.endDocument();
    return;
  }
  if (persons.empty()) terminal.paragraph("The trash is empty");
  const size_t digits = std::max<size_t>(std::to_string(trash().allPersonsCount()).size(), 2);
  for (const auto& person : persons) {
    if (person != persons.front()) terminal.line();
    PersonCard::print(terminal, *person, placeIn(*person) + 1, digits);
  }
}

/// All persons of the trash.
TrashCommand::Persons TrashCommand::meant() {
  Persons persons;
  for (IKRPerson& person : trash().allPersons()) {
    if (KRRef<KRTempPerson> each = trashed(person)) persons.push_back(std::move(each));
  }
  return persons;
}

/// Those that the words call, each once: by their number in the list, or by an ID that only one has.
TrashCommand::Persons TrashCommand::named() const {
  if (persons_.empty()) throw Unusable("which contact? (its number or ID, as \"krcontacts trash list\" shows them)");
  const Persons all = meant();
  Persons persons;
  for (const std::string& word : persons_) {
    KRRef<KRTempPerson> found;
    if (const auto place = placeOf(word)) {
      found = trashed(*trash().allPersons().at(*place));
    } else {
      for (const auto& each : all) {
        if (!sameText(each->ID(), std::string_view(word))) continue;
        if (found) throw Unusable("the trash has several contacts of the ID \"" + word + "\"; say which by its number");
        found = each;
      }
    }
    if (!found) throw Unusable("there is no contact \"" + word + "\" in the trash");
    if (std::find(persons.begin(), persons.end(), found) == persons.end()) persons.push_back(std::move(found));
  }
  return persons;
}

// Putting back

std::vector<TrashCommand::Batch> TrashCommand::batches(const Persons& persons, Terminal& terminal) const {
  std::vector<Batch> all;
  KRRef<KRAddressBook> into;
  if (!into_.empty()) into = BookOpener::openWritable(into_, terminal);
  for (const auto& person : persons) {
    KRRef<KRAddressBook> book = into;
    if (!book) {
      book = KRRef<KRAddressBook>(trash().addressBookofPersonFrom(person.get()));
      if (!book) book = bookAtItsPlace(*person, terminal);
      if (!book) {
        throw Unusable(personText(*person) + " came from " + origin(*person) +
                       ", which is not in the list of books; --into BOOK puts it into another one");
      }
    }
    const auto known = std::find_if(all.begin(), all.end(), [&](const Batch& each) {
      return static_cast<KRAddressBook*>(each.book.get()) == book.get();
    });
    if (known != all.end()) {
      known->persons.push_back(person);
    } else {
      all.push_back({UserBooks::writable(*book), {person}});
    }
  }
  return all;
}

/// Puts the persons into the book, still in memory only; how many are left out, and told, because they are there.
size_t TrashCommand::putBack(Batch& batch, Terminal& terminal) const {
  EqualPersons known(*batch.book);
  Persons wanted;
  wanted.swap(batch.persons);
  for (const auto& person : wanted) {
    const KRRef<ABPerson> restored = KRTrashAddressBook::restoredPerson(person.get());
    if (!again_ && known.has(*restored)) {
      terminal.say(personText(*person) + " is in " + UserBooks::described(*batch.book) +
                   " already, the same in everything shown; it stays in the trash (--again restores it all the same)");
      continue;
    }
    if (known.hasEqual(*restored)) ++batch.twins;
    known.add(*restored);
    batch.goneGroups += ::putBack(*batch.book, *person, restored);
    batch.persons.push_back(person);
  }
  return wanted.size() - batch.persons.size();
}

int TrashCommand::restore(Terminal& terminal) {
  if (all_ && !persons_.empty()) throw Unusable("--all means every contact; none can be named beside it");
  if (restore_->count("--into") > 0 && into_.empty()) throw Unusable("--into names no book");
  const Persons persons = all_ ? meant() : named();
  if (persons.empty()) terminal.paragraph("The trash is empty");
  std::vector<Batch> all = batches(persons, terminal);
  KRSaveScope scope;
  size_t goneGroups = 0;
  int code = ExitCode::Done;
  for (Batch& batch : all) {
    if (putBack(batch, terminal) > 0) code = ExitCode::Unusable;
    goneGroups += batch.goneGroups;
    if (!batch.persons.empty()) batch.book->save();
  }
  std::erase_if(all, [](const Batch& batch) { return batch.persons.empty(); });
  if (!dryRun_) {
    const KRUndoTurn turn;
    // The books first: a contact leaves the trash only when it stands in its book.
    static_cast<void>(scope.commit());
    Persons back;
    for (Batch& batch : all) {
      const auto& failures = scope.failures();
      const auto failure = std::find_if(failures.begin(), failures.end(), [&](const KRSaveScope::Failure& each) {
        return each.book.get() == static_cast<KRAddressBook*>(batch.book.get());
      });
      if (failure == failures.end()) {
        back.insert(back.end(), batch.persons.begin(), batch.persons.end());
      } else {
        terminal.say(contacts(batch.persons.size()) + " not restored to " + UserBooks::described(*batch.book) + ": " +
                     failure->error.sentence);
        batch.isSaved = false;
        code = ExitCode::Unusable;
      }
    }
    if (!back.empty()) takeOut(back);
    if (code != ExitCode::Done && back.empty()) return code;
  }
  for (const Batch& batch : all) {
    if (!batch.isSaved) continue;
    terminal.paragraph((dryRun_ ? "Would restore " : "Restored ") + contacts(batch.persons.size()) + " to " +
                       UserBooks::described(*batch.book));
    if (batch.twins > 0) {
      terminal.paragraph(std::to_string(batch.twins) + (batch.twins == 1 ? " of them is" : " of them are") +
                         " the same in everything shown as another one there");
    }
  }
  if (goneGroups > 0) {
    terminal.paragraph(counted(goneGroups, "group membership", "group memberships") +
                       " not restored: the groups are gone");
  }
  return code;
}

void TrashCommand::takeOut(const Persons& persons) {
  const std::vector<KRRef<IKRPerson>> gone(persons.begin(), persons.end());
  trash().removePersons(KRPersonArray(gone));
  if (const KRResult<void> saved = trash().saveNow(); !saved) {
    throw Unusable("the trash still holds what was taken out of it: " + saved.error().sentence);
  }
}

// For ever

void TrashCommand::remove(Terminal& terminal) {
  const Persons persons = named();
  if (!dryRun_) takeOut(persons);
  for (const auto& person : persons) {
    terminal.paragraph((dryRun_ ? "Would remove " : "Removed ") + personText(*person) + " from the trash for ever");
  }
}

void TrashCommand::clear(Terminal& terminal) {
  const size_t count = trash().allPersonsCount();
  if (count == 0) {
    terminal.paragraph("The trash is empty");
    return;
  }
  if (dryRun_) {
    terminal.paragraph("Would remove " + contacts(count) + " from the trash for ever");
    return;
  }
  if (!yes_) {
    if (!Terminal::canAsk()) throw Unusable("the trash is cleared for ever; --yes confirms that");
    terminal.say("remove " + contacts(count) + " from the trash for ever? [y/N]");
    std::string line;
    std::getline(std::cin, line);
    if (line != "y" && line != "Y" && line != "yes") {
      terminal.paragraph("Nothing is removed");
      return;
    }
  }
  takeOut(meant());
  terminal.paragraph("Removed " + contacts(count) + " from the trash for ever, in " +
                     shownText(trash().savePath().view()));
}
