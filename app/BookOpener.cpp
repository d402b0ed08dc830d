#include "app/BookOpener.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

#include "app/Unusable.h"
#include "contacts/vcard/KRVCardBook.h"
#include "platform/KRFile.h"

namespace {

constexpr std::string_view kStandardInput = "-";
constexpr std::array<std::string_view, 2> kExtensions = {".vcf", ".vcard"};

/// What the file is called in front of people.
std::string calledName(const std::string& file) {
  return file == kStandardInput ? "standard input" : file;
}

bool isKnownExtension(const std::string& file) {
  std::string extension = std::filesystem::path(file).extension().string();
  for (char& letter : extension) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  }
  return std::find(kExtensions.begin(), kExtensions.end(), extension) != kExtensions.end();
}

std::string counted(size_t count, std::string_view one, std::string_view many) {
  return std::to_string(count) + " " + std::string(count == 1 ? one : many);
}

/// Reads one file into the book, and tells about it.
class FileReading {
 public:
  FileReading(const std::string& file, bool verbose, Terminal& terminal)
      : file_(file), verbose_(verbose), terminal_(terminal) {}

  void readInto(KRVCardBook& book) {
    terminal_.progress().show("Reading " + calledName(file_));
    const KRResult<KRVCardBook::Summary> summary = add(book);
    terminal_.progress().clear();
    if (!summary) throw Unusable(summary.error().sentence);
    const bool hasContact = summary->persons > 0 || summary->groups > 0;
    if (!hasContact && !summary->isEmpty) {
      throw Unusable(calledName(file_) + ": there is no contact in this file" +
                     (summary->lostCards > 0 ? " that can be read" : ""));
    }
    tell(*summary);
  }

 private:
  KRResult<KRVCardBook::Summary> add(KRVCardBook& book) {
    const KRVCardNoteSink notes = [this](const KRVCardNote& note) { take(note); };
    if (file_ == kStandardInput) return book.addStandardInput(notes);
    const KRFile::Kind kind = KRFile::kind(std::string_view(file_));
    // What is not there, or is a folder, is told as such whatever its name ends with.
    const bool isFile = kind != KRFile::Kind::Missing && kind != KRFile::Kind::Folder;
    if (isFile && !isKnownExtension(file_)) {
      throw Unusable(file_ + ": unknown extension; address books are named .vcf or .vcard");
    }
    return book.addFile(std::string_view(file_), notes);
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

}  // namespace

KRRef<KRAddressBook> BookOpener::open(const std::vector<std::string>& files, bool verbose, Terminal& terminal) {
  auto book =
      krMake<KRVCardBook>(joined(files, "+", &KRVCardBook::IDForFile), joined(files, ", ", &KRVCardBook::nameForFile));
  for (const std::string& file : files) FileReading(file, verbose, terminal).readInto(*book);
  return book;
}
