#include "app/UserBooks.h"

#include <filesystem>
#include <system_error>

#include "app/DisplayText.h"
#include "app/Unusable.h"
#include "contacts/KRTrashAddressBookID.h"
#include "contacts/stores/KRAddedBooks.h"
#include "contacts/stores/KRUnavailableBook.h"
#include "platform/KRFile.h"
#include "platform/KRMainQueue.h"

namespace {

void check(KRAddressBook& book) {
  if (const KRResult<void> loaded = book.load(); !loaded) {
    throw Unusable(std::string(book.name().view()) + " (" + std::string(book.ID().view()) +
                   "): " + loaded.error().sentence);
  }
}

KRRef<KRAddressBook> defaultBook(Terminal& terminal) {
  KRAddressBookManager& manager = UserBooks::manager(terminal);
  bool isOnlyTrash = true;
  for (const KRAddressBook& book : manager.addressBookArray()) isOnlyTrash = isOnlyTrash && UserBooks::isTrash(book);
  if (isOnlyTrash) {
    throw Unusable(
        "there is no address book yet; \"krcontacts books add PATH\" adds one that is there, and \"krcontacts books "
        "add --new NAME\" makes one");
  }
  return KRRef<KRAddressBook>(manager.defaultAddressBook());
}

/// Whether the word reads like the path of a file rather than like the name of a book.
bool isLikePath(const std::string& word) {
  const std::string extension = std::filesystem::path(word).extension().string();
  return word.find('/') != std::string::npos || (extension.size() > 2 && extension.find(' ') == std::string::npos);
}

/// Why a database cannot be opened whose books, and so their names, are not known; or "".
std::string unknownBooks(Terminal& terminal) {
  for (const KRAddressBook& book : UserBooks::manager(terminal).addressBookArray()) {
    const auto* unavailable = dynamic_cast<const KRUnavailableBook*>(&book);
    if (unavailable != nullptr && book.kind() == "sqlite") return unavailable->error().sentence;
  }
  return {};
}

/// Why the word calls no book.
std::string missing(const std::string& word, Terminal& terminal) {
  if (KRFile::kind(std::string_view(word)) != KRFile::Kind::Missing) {
    return word + ": this is none of your books; \"krcontacts books add\" adds what is at a path";
  }
  if (isLikePath(word)) return word + ": there is no such file, and no book of that name";
  if (const std::string reason = unknownBooks(terminal); !reason.empty()) {
    return "\"" + word + "\" is none of the books that can be opened; those of a database cannot: " + reason;
  }
  return "there is no book \"" + word + "\"; \"krcontacts books\" shows those there are";
}

}  // namespace

KRAddressBookManager& UserBooks::manager(Terminal& terminal) {
  static bool isLoaded = false;
  KRAddressBookManager& shared = *KRAddressBookManager::ShareAddressBookManager();
  if (isLoaded) return shared;
  isLoaded = true;
  if (const KRResult<void> list = KRAddedBooks::check(); !list) {
    terminal.say(list.error().sentence + "; the books in it are not shown");
  }
  terminal.progress().show("Opening the address books");
  shared.loadThreed();
  KRMainQueue::shared().drain();
  terminal.progress().clear();
  return shared;
}

KRAddressBook* UserBooks::find(const std::string& word, Terminal& terminal) {
  KRAddressBookManager& books = manager(terminal);
  if (KRAddressBook* book = books.addressBookByID(KRString(word))) return book;
  KRAddressBook* found = nullptr;
  for (KRAddressBook& book : books.addressBookArray()) {
    if (!sameText(book.name(), std::string_view(word))) continue;
    if (found != nullptr)
      throw Unusable("several books are called \"" + word + "\"; \"krcontacts books\" shows their IDs");
    found = &book;
  }
  return found;
}

KRRef<KRAddressBook> UserBooks::get(const std::string& word, Terminal& terminal) {
  KRAddressBook* book = find(word, terminal);
  if (book == nullptr) throw Unusable(missing(word, terminal));
  return KRRef<KRAddressBook>(book);
}

void UserBooks::checkFile(const std::string& word, Terminal& terminal) {
  if (!isLikePath(word) && KRFile::kind(std::string_view(word)) == KRFile::Kind::Missing) get(word, terminal);
}

KRRef<KRAddressBook> UserBooks::opened(const std::string& word, Terminal& terminal) {
  KRRef<KRAddressBook> book = word.empty() ? defaultBook(terminal) : get(word, terminal);
  terminal.progress().show("Reading " + std::string(book->name().view()));
  check(*book);
  terminal.progress().clear();
  return book;
}

KRRef<KRStoredBook> UserBooks::writable(const std::string& word, Terminal& terminal) {
  return writable(*opened(word, terminal));
}

KRRef<KRStoredBook> UserBooks::writable(KRAddressBook& book) {
  check(book);
  auto* stored = dynamic_cast<KRStoredBook*>(&book);
  if (stored == nullptr) throw Unusable(described(book) + ": books of this kind are read, not written");
  return KRRef<KRStoredBook>(stored);
}

void UserBooks::checkApart(const std::string& file, const KRAddressBook& book) {
  const std::filesystem::path place = std::string(book.place().view());
  if (file.empty() || file == "-" || place.empty()) return;
  std::error_code failed;
  std::filesystem::path path = std::filesystem::absolute(file, failed);
  if (failed) return;
  const bool isOwn = std::filesystem::equivalent(path, place, failed) ||
                     std::filesystem::equivalent(path.parent_path(), place, failed);
  if (isOwn) throw Unusable(file + ": this is where " + described(book) + " is kept; write to another file");
}

void UserBooks::checkApart(const std::string& file, const std::string& source) {
  std::error_code failed;
  if (std::filesystem::equivalent(file, source, failed)) {
    throw Unusable(file + ": this is the file that is read; write to another one");
  }
}

bool UserBooks::isTrash(const KRAddressBook& book) {
  return book.ID() == KRTrashAddressBookID;
}

std::string UserBooks::described(const KRAddressBook& book) {
  std::string text = shownText(book.name().view()) + " (" + shownText(book.ID().view());
  const KRString place = book.place();
  // The identifier of a file says its place already.
  if (!place.isEmpty() && book.ID().view().find(place.view()) == std::string_view::npos) {
    text += ", " + shownText(place.view());
  }
  return text + ")";
}
