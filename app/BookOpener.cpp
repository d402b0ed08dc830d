#include "app/BookOpener.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

#include "app/Unusable.h"
#include "contacts/vcard/KRVCardReader.h"

namespace {

constexpr std::string_view kStandardInput = "-";
constexpr std::array<std::string_view, 2> kExtensions = {".vcf", ".vcard"};
constexpr size_t kPiece = size_t{1} << 20U;

/// What the file is called in front of people.
std::string calledName(const std::string& file) {
  return file == kStandardInput ? "standard input" : file;
}

bool isKnownExtension(const std::string& file) {
  std::string extension = std::filesystem::path(file).extension().string();
  for (char& letter : extension)
    letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  return std::find(kExtensions.begin(), kExtensions.end(), extension) != kExtensions.end();
}

[[noreturn]] void refuse(const std::string& file, const std::string& reason) {
  throw Unusable(calledName(file) + ": " + reason);
}

/// An open file, closed with it.
class Input {
 public:
  explicit Input(const std::string& file) : file_(file) {
    if (file == kStandardInput) {
      descriptor_ = STDIN_FILENO;
      return;
    }
    struct stat about {};
    if (::stat(file.c_str(), &about) != 0) refuse(file, std::generic_category().message(errno));
    if (S_ISDIR(about.st_mode)) refuse(file, "this is a folder, not a file");
    if (!isKnownExtension(file)) refuse(file, "unknown extension; address books are named .vcf or .vcard");
    descriptor_ = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor_ < 0) refuse(file, std::generic_category().message(errno));
    size_ = about.st_size;
  }
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;
  ~Input() {
    if (descriptor_ > STDERR_FILENO) ::close(descriptor_);
  }

  /// The next bytes; none at the end of the file.
  std::string_view read() {
    for (;;) {
      const ssize_t count = ::read(descriptor_, buffer_.data(), buffer_.size());
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) refuse(file_, std::generic_category().message(errno));
      done_ += count;
      return {buffer_.data(), static_cast<size_t>(count)};
    }
  }

  /// The share that is read, or nothing when the size is not known.
  std::optional<double> percent() const {
    if (size_ <= 0) return std::nullopt;
    return 100.0 * static_cast<double>(done_) / static_cast<double>(size_);
  }

 private:
  const std::string& file_;
  int descriptor_ = -1;
  off_t size_ = 0;
  off_t done_ = 0;
  std::string buffer_ = std::string(kPiece, '\0');
};

/// Whether the bytes hold anything to read: more than space, line ends and the marks with which texts begin.
bool holdsText(std::string_view bytes) {
  return bytes.find_first_not_of(std::string_view("\0 \t\r\n\xEF\xBB\xBF\xFE\xFF", 10)) != std::string_view::npos;
}

std::string counted(size_t count, std::string_view one, std::string_view many) {
  return std::to_string(count) + " " + std::string(count == 1 ? one : many);
}

/// Reads one file into the book.
class FileReading {
 public:
  FileReading(const std::string& file, KRAddressBook& book, bool verbose, Terminal& terminal)
      : file_(file), book_(book), verbose_(verbose), terminal_(terminal) {}

  void run() {
    KRVCardReader reader([this](const KRRef<ABPerson>& person) { book_.addPerson(person.get()); },
                         [this](const KRVCardNote& note) { take(note); });
    Input input(file_);
    const std::string work = "Reading " + calledName(file_);
    bool hasText = false;
    for (std::string_view bytes = input.read(); !bytes.empty(); bytes = input.read()) {
      hasText = hasText || holdsText(bytes);
      reader.feed(bytes);
      if (const auto percent = input.percent()) terminal_.progress().show(work, *percent);
    }
    reader.finish();
    const KRVCardReader::Counts& counts = reader.counts();
    if (hasText && counts.persons == 0 && counts.groups == 0) {
      refuse(file_, counts.lostCards == 0 ? "there is no contact in this file"
                                          : "there is no contact in this file that can be read");
    }
    tell(counts);
  }

 private:
  void take(const KRVCardNote& note) {
    if (!verbose_) return;
    terminal_.say(calledName(file_) + ":" + std::to_string(note.line) + ": " + std::string(note.sentence().view()));
  }

  void tell(const KRVCardReader::Counts& counts) {
    if (counts.notes == 0) return;
    const size_t lines = counts.notes - counts.lostCards;
    std::string text;
    if (counts.lostCards > 0) text = counted(counts.lostCards, "contact", "contacts") + " could not be read";
    if (lines > 0) {
      text += (text.empty() ? "" : ", ") + counted(lines, "place", "places") + " in the text could not be understood";
    }
    terminal_.say(calledName(file_) + ": " + text + (verbose_ ? "" : "; --verbose tells where and why"));
  }

  const std::string& file_;
  KRAddressBook& book_;
  bool verbose_;
  Terminal& terminal_;
};

/// The same for the same files, wherever the program is started.
KRString bookID(const std::vector<std::string>& files) {
  std::string id = "vcard";
  for (const std::string& file : files) {
    std::error_code ignored;
    id += ":" + (file == kStandardInput ? file : std::filesystem::absolute(file, ignored).lexically_normal().string());
  }
  return KRString(id);
}

KRString bookName(const std::vector<std::string>& files) {
  std::string name;
  for (const std::string& file : files) {
    name += (name.empty() ? "" : ", ") +
            (file == kStandardInput ? calledName(file) : std::filesystem::path(file).filename().string());
  }
  return KRString(name);
}

}  // namespace

KRRef<KRAddressBook> BookOpener::open(const std::vector<std::string>& files, bool verbose, Terminal& terminal) {
  auto book = krMake<KRAddressBook>(bookID(files), bookName(files));
  for (const std::string& file : files) FileReading(file, *book, verbose, terminal).run();
  return book;
}
