#include "app/BookOpener.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "app/DisplayText.h"
#include "app/TableFile.h"
#include "app/Unusable.h"
#include "app/UserBooks.h"
#include "contacts/stores/KRBookPaths.h"
#include "contacts/vcard/KRVCardBook.h"
#include "platform/KRASCII.h"
#include "platform/KRFile.h"

namespace {

constexpr std::string_view kStandardInput = "-";
constexpr std::array<std::string_view, 2> kExtensions = {".vcf", ".vcard"};

/// What the file is called in front of people.
std::string calledName(const std::string& file) {
  return file == kStandardInput ? "standard input" : file;
}

bool hasExtension(const std::string& file, std::string_view sought) {
  return krEqualsIgnoringCase(std::filesystem::path(file).extension().string(), sought);
}

/// Reads one file into the book, and tells about it.
class FileReading {
 public:
  FileReading(const std::string& file, const TableOptions& tables, bool verbose, Terminal& terminal)
      : file_(file), tables_(tables), verbose_(verbose), terminal_(terminal) {}

  void readInto(KRVCardBook& book) {
    terminal_.progress().show("Reading " + calledName(file_));
    if (TableOptions::isTable(file_)) {
      readRowsInto(book);
    } else {
      finish(add(book));
    }
  }

  /// The same, and the file's bytes.
  KRBuffer readWholeInto(KRVCardBook& book) {
    terminal_.progress().show("Reading " + calledName(file_));
    check();
    KRResult<KRBuffer> bytes =
        file_ == kStandardInput ? KRFile::readStandardInput() : KRFile::read(std::string_view(file_));
    if (!bytes) throw Unusable(bytes.error().sentence);
    finish(book.addBytes(bytes->view(), [this](const KRVCardNote& note) { take(note); }));
    return *std::move(bytes);
  }

 private:
  void finish(const KRResult<KRVCardBook::Summary>& summary) {
    terminal_.progress().clear();
    if (!summary) throw Unusable(summary.error().sentence);
    const bool hasContact = summary->persons > 0 || summary->groups > 0;
    if (!hasContact && !summary->isEmpty) {
      throw Unusable(calledName(file_) + ": there is no contact in this file" +
                     (summary->lostCards > 0 ? " that can be read" : ""));
    }
    tell(*summary);
  }

  /// A delimited file, as the loader of persons reads it.
  void readRowsInto(KRAddressBook& book) {
    size_t count = 0;
    size_t dropped = 0;
    TableFile(file_, tables_)
        .read(
            [&](const KRRef<IKRPerson>& person, double) {
              book.addPerson(person.get());
              ++count;
            },
            [&](const KRPersonLoadNote& note) {
              if (note.isPersonLost) ++dropped;
              if (!verbose_) return;
              terminal_.say(file_ + ":" + std::to_string(note.line) + ": " + std::string(note.sentence.view()));
            });
    terminal_.progress().clear();
    if (count == 0 && dropped != 0) throw Unusable(file_ + ": there is no contact in this file that can be read");
    if (dropped == 0) return;
    terminal_.say(file_ + ": " + counted(dropped, "row", "rows") + " could not be read" +
                  (verbose_ ? "" : "; --verbose tells where and why"));
  }

  KRResult<KRVCardBook::Summary> add(KRVCardBook& book) {
    const KRVCardNoteSink notes = [this](const KRVCardNote& note) { take(note); };
    if (file_ == kStandardInput) return book.addStandardInput(notes);
    check();
    return book.addFile(std::string_view(file_), notes);
  }

  void check() const {
    const KRFile::Kind kind = KRFile::kind(std::string_view(file_));
    // What is not there, or is a folder, is told as such whatever its name ends with.
    const bool isFile = kind != KRFile::Kind::Missing && kind != KRFile::Kind::Folder;
    if (isFile && !BookOpener::holdsCards(file_)) {
      throw Unusable(file_ + ": unknown extension; address books are named .vcf, .vcard or .csv");
    }
  }

  void take(const KRVCardNote& note) {
    if (!verbose_) return;
    terminal_.say(calledName(file_) + ":" + std::to_string(note.line) + ": " + std::string(note.sentence().view()));
  }

  void tell(const KRVCardBook::Summary& summary) {
    if (summary.notes == 0) return;
    const size_t places = summary.notes - summary.lostCards;
    std::string text;
    if (summary.lostCards > 0) text = counted(summary.lostCards, "contact", "contacts") + " could not be read";
    if (places > 0) {
      text += (text.empty() ? "" : ", ") + counted(places, "place", "places") + " in the text could not be understood";
    }
    terminal_.say(calledName(file_) + ": " + text + (verbose_ ? "" : "; --verbose tells where and why"));
  }

  const std::string& file_;
  const TableOptions& tables_;
  bool verbose_;
  Terminal& terminal_;
};

KRString joined(const std::vector<std::string>& files, std::string_view separator, KRString (*each)(KRText)) {
  std::string text;
  for (const std::string& file : files) {
    text += text.empty() ? "" : separator;
    text += file == kStandardInput ? calledName(file) : std::string(each(std::string_view(file)).view());
  }
  return KRString(text);
}

bool isNoPath(const std::string& word) {
  return word != kStandardInput && KRFile::kind(std::string_view(word)) == KRFile::Kind::Missing;
}

/// Whether there is something at the path that keeps books of its own, unlike a file that is read.
bool isStore(const std::string& path) {
  return KRFile::kind(std::string_view(path)) == KRFile::Kind::Folder || krIsLibraryPath(std::string_view(path));
}

KRRef<KRAddressBook> storeAt(const std::string& path) {
  const std::vector<KRBookSource> sources = krBooksAtPath(std::string_view(path));
  if (sources.size() > 1) {
    throw Unusable(path + ": there are several books in it; \"krcontacts books add\" adds them to your list");
  }
  KRResult<KRRef<KRAddressBook>> book = sources.front().open();
  if (!book) throw Unusable(book.error().sentence);
  if (const KRResult<void> loaded = (*book)->load(); !loaded) throw Unusable(loaded.error().sentence);
  return *std::move(book);
}

/// Whoever looks a book up by its identifier finds those too that were opened by their path.
KRRef<KRAddressBook> entered(KRRef<KRAddressBook> book) {
  KRAddressBookManager::ShareAddressBookManager()->addAddressBook(book.get());
  return book;
}

}  // namespace

KRRef<KRAddressBook> BookOpener::open(const std::vector<std::string>& words, bool verbose, Terminal& terminal,
                                      const TableOptions& tables) {
  if (words.empty()) return UserBooks::opened({}, terminal);
  for (const std::string& word : words) {
    const bool isBook = isNoPath(word) && UserBooks::find(word, terminal) != nullptr;
    if (!isBook && !isStore(word)) {
      if (word != kStandardInput) UserBooks::checkFile(word, terminal);
      continue;
    }
    if (words.size() > 1) throw Unusable(word + ": only files can be taken together as one address book");
    return isBook ? UserBooks::opened(word, terminal) : entered(storeAt(word));
  }
  auto book =
      krMake<KRVCardBook>(joined(words, "+", &KRVCardBook::IDForFile), joined(words, ", ", &KRVCardBook::nameForFile));
  for (const std::string& file : words) FileReading(file, tables, verbose, terminal).readInto(*book);
  return entered(std::move(book));
}

KRRef<KRStoredBook> BookOpener::openWritable(const std::string& word, Terminal& terminal) {
  if (word == kStandardInput) throw Unusable("standard input is read, not written; name a file or a book");
  if (word.empty() || isNoPath(word)) return UserBooks::writable(word, terminal);
  if (!isStore(word) && !holdsCards(word)) {
    throw Unusable(word + (TableOptions::isTable(word)
                               ? ": delimited files are read, not written; import them into a book"
                               : ": unknown extension; files of contacts are named .vcf or .vcard"));
  }
  // The books of the list first: one that is opened by its path is the same book, of the same identifier.
  UserBooks::manager(terminal);
  std::error_code failed;
  const std::filesystem::path whole = std::filesystem::absolute(word, failed);
  std::string path = failed ? word : whole.lexically_normal().string();
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  terminal.progress().show("Reading " + word);
  const KRRef<KRAddressBook> book = entered(storeAt(path));
  terminal.progress().clear();
  return UserBooks::writable(*book);
}

bool BookOpener::holdsCards(const std::string& file) {
  if (file == kStandardInput) return true;
  return std::any_of(kExtensions.begin(), kExtensions.end(),
                     [&](std::string_view extension) { return hasExtension(file, extension); });
}

BookOpener::Cards BookOpener::openCards(const std::string& file, bool verbose, Terminal& terminal,
                                        const TableOptions& tables) {
  Cards cards;
  cards.book =
      krMake<KRVCardBook>(joined({file}, "", &KRVCardBook::IDForFile), joined({file}, "", &KRVCardBook::nameForFile));
  FileReading reading(file, tables, verbose, terminal);
  if (TableOptions::isTable(file)) {
    reading.readInto(*cards.book);
  } else {
    cards.bytes = reading.readWholeInto(*cards.book);
  }
  return cards;
}
