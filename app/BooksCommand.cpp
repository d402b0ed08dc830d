#include "app/BooksCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <system_error>

#include "app/BookOpener.h"
#include "app/BooksDocument.h"
#include "app/DisplayText.h"
#include "app/JsonWriter.h"
#include "app/StoredChoice.h"
#include "app/Unusable.h"
#include "app/UserBooks.h"
#include "contacts/stores/KRAddedBooks.h"
#include "contacts/stores/KRBookPaths.h"
#include "contacts/stores/KRMacAddressBook.h"
#include "contacts/stores/KRSQLiteLibrary.h"
#include "platform/KRFile.h"
#include "platform/KRHostInfo.h"

namespace {

template <class T>
T checked(KRResult<T> result) {
  if (!result) throw Unusable(result.error().sentence);
  return *std::move(result);
}

std::string absolutePath(const std::string& path) {
  std::error_code failed;
  const std::filesystem::path whole = std::filesystem::absolute(path, failed);
  if (failed) return path;
  std::string text = whole.lexically_normal().string();
  while (text.size() > 1 && text.back() == '/') text.pop_back();
  return text;
}

/// Throws unless there are books at the path that can be opened: a mistake in a path is told at once, not by a book in
/// the list that never opens.
std::vector<KRBookSource> usableBooksAt(const std::string& path, Terminal& terminal) {
  if (KRFile::kind(std::string_view(path)) == KRFile::Kind::Other) throw Unusable(path + ": this is no file or folder");
  const bool isDatabase = krIsLibraryPath(std::string_view(path));
  // A file that is no address book at all would open as an empty one.
  if (!isDatabase && KRFile::kind(std::string_view(path)) != KRFile::Kind::Folder) {
    static_cast<void>(BookOpener::open({path}, false, terminal));
  }
  std::vector<KRBookSource> sources = krBooksAtPath(std::string_view(path));
  for (const KRBookSource& source : sources) static_cast<void>(checked(source.open()));
  return sources;
}

std::string namesOf(const std::vector<KRBookSource>& sources) {
  std::string names;
  for (const KRBookSource& source : sources) {
    names += (names.empty() ? "" : ", ") + shownText(source.name.view()) + " (" + shownText(source.ID.view()) + ")";
  }
  return names;
}

}  // namespace

BooksCommand::BooksCommand(CLI::App& app)
    : words_(app.add_subcommand("books")),
      show_(addVerb("show")),
      default_(addVerb("default")),
      remove_(addVerb("remove")),
      add_(words_->add_subcommand("add")) {
  path_ = add_->add_option("PATH", book_);
  new_ = add_->add_option("--new", name_)->excludes(path_);
  for (CLI::App* verb : {add_, remove_, default_}) verb->add_flag("--dry-run", dryRun_);
  add_->fallthrough();
  words_->add_flag("--json", json_);
  words_->require_subcommand(0, 1);
}

CLI::App* BooksCommand::addVerb(const char* name) {
  CLI::App* verb = words_->add_subcommand(name);
  verb->fallthrough();
  verb->add_option("ID", book_)->required();
  return verb;
}

bool BooksCommand::isChosen() const {
  return words_->parsed();
}

int BooksCommand::run(Terminal& terminal) {
  if (add_->parsed()) {
    add(terminal);
  } else if (remove_->parsed()) {
    remove(terminal);
  } else if (default_->parsed()) {
    makeDefault(terminal);
  } else if (show_->parsed()) {
    show(terminal);
  } else {
    list(terminal);
  }
  return ExitCode::Done;
}

void BooksCommand::list(Terminal& terminal) const {
  if (json_) {
    BooksDocument::writeAll(terminal.out(), UserBooks::manager(terminal));
    return;
  }
  KRAddressBookManager& manager = UserBooks::manager(terminal);
  const KRAddressBook* standard = manager.defaultAddressBook();
  bool isFirst = true;
  for (KRAddressBook& book : manager.addressBookArray()) {
    if (!isFirst) terminal.line();
    isFirst = false;
    BooksDocument::print(terminal, book, &book == standard && !UserBooks::isTrash(book));
  }
}

void BooksCommand::show(Terminal& terminal) const {
  KRAddressBookManager& manager = UserBooks::manager(terminal);
  const KRRef<KRAddressBook> book = UserBooks::get(book_, terminal);
  const bool isDefault = book.get() == manager.defaultAddressBook() && !UserBooks::isTrash(*book);
  if (json_) {
    BooksDocument::writeOne(terminal.out(), *book, isDefault);
  } else {
    BooksDocument::print(terminal, *book, isDefault);
    BooksDocument::printGroups(terminal, *book);
  }
}

// Adding

void BooksCommand::add(Terminal& terminal) const {
  if (new_->count() > 0) {
    addNew(terminal);
  } else if (path_->count() > 0) {
    if (!addHidden(terminal)) addPath(terminal);
  } else {
    throw Unusable("which book is to be added? (PATH, or --new NAME)");
  }
}

void BooksCommand::addNew(Terminal& terminal) const {
  if (name_.find_first_not_of(" \t\r\n") == std::string::npos) throw Unusable("a book needs a name");
  const KRString path = KRMacAddressBook::libraryPath();
  if (path.isNothing()) throw Unusable("there is no folder to keep address books in");
  if (dryRun_) {
    terminal.paragraph("Would make " + shownText(name_) + " in " + shownText(path.view()));
    return;
  }
  if (const KRResult<void> made = KRFile::createFolders(KRHostInfo::dataFolder(), true); !made) {
    throw Unusable(made.error().sentence);
  }
  const auto library = checked(KRSQLiteLibrary::open(path, KRSQLiteLibrary::Mode::Create));
  const auto book = checked(library->addBook(std::string_view(name_)));
  terminal.paragraph("Made " + UserBooks::described(*book));
}

/// A book that was taken out of the list can be added by its ID again.
bool BooksCommand::addHidden(Terminal& terminal) const {
  const KRStringList hidden = KRAddedBooks::hiddenIDs();
  if (std::find(hidden.begin(), hidden.end(), KRString(book_)) == hidden.end()) return false;
  if (!dryRun_) static_cast<void>(checked(KRAddedBooks::show(std::string_view(book_))));
  terminal.paragraph((dryRun_ ? "Would list " : "Listed ") + shownText(book_) + " again");
  return true;
}

void BooksCommand::addPath(Terminal& terminal) const {
  const std::string path = absolutePath(book_);
  const std::vector<KRBookSource> sources = usableBooksAt(book_, terminal);
  const KRStringList paths = KRAddedBooks::paths();
  bool isNew = std::find(paths.begin(), paths.end(), KRString(path)) == paths.end() &&
               !(KRMacAddressBook::libraryPath() == KRString(path));
  const KRStringList hidden = KRAddedBooks::hiddenIDs();
  std::vector<KRString> again;
  for (const KRBookSource& source : sources) {
    if (std::find(hidden.begin(), hidden.end(), source.ID) != hidden.end()) again.push_back(source.ID);
  }
  const std::string what = namesOf(krBooksAtPath(std::string_view(path))) + " at " + shownText(path);
  if (!isNew && again.empty()) {
    terminal.paragraph("In the list already: " + what);
    return;
  }
  if (!dryRun_) {
    for (const KRString& ID : again) static_cast<void>(checked(KRAddedBooks::show(ID)));
    if (isNew) static_cast<void>(checked(KRAddedBooks::add(std::string_view(path))));
  }
  terminal.paragraph((dryRun_ ? "Would add " : "Added ") + what);
}

// Removing, and the default

void BooksCommand::remove(Terminal& terminal) const {
  const KRRef<KRAddressBook> book = UserBooks::get(book_, terminal);
  if (UserBooks::isTrash(*book)) throw Unusable("the trash is always in the list");
  if (!dryRun_) static_cast<void>(checked(KRAddedBooks::hide(book->ID())));
  terminal.paragraph((dryRun_ ? "Would take " : "Took ") + UserBooks::described(*book) +
                     " out of the list; its contacts stay where they are");
}

void BooksCommand::makeDefault(Terminal& terminal) const {
  const KRRef<KRAddressBook> book = UserBooks::get(book_, terminal);
  if (UserBooks::isTrash(*book)) throw Unusable("the trash cannot be the default book");
  if (!dryRun_) {
    UserBooks::manager(terminal).setDefaultAddressBook(book.get());
    keepPreferences();
  }
  terminal.paragraph((dryRun_ ? "The default book would be " : "The default book is now ") +
                     UserBooks::described(*book));
}
