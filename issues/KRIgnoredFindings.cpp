#include "issues/KRIgnoredFindings.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <utility>

#include "contacts/undo/KRUndoRecorder.h"
#include "issues/KRFindingKey.h"
#include "issues/KRIssue.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueObject.h"
#include "platform/KRDigest.h"
#include "platform/KRFile.h"
#include "platform/KRFileLock.h"
#include "platform/KRFileWriter.h"
#include "platform/KRHostInfo.h"

namespace {

constexpr std::string_view kFirstLine = "ignored findings 1";
constexpr std::string_view kBook = "book\t";
constexpr std::string_view kEnding = ".txt";
constexpr size_t kKeyLength = 64;
/// Names of more contacts than these are left out.
constexpr size_t kNames = 8;
constexpr size_t kFields = 5;

KRString folder() {
  const KRString data = KRHostInfo::dataFolder();
  return data.isNothing() ? KRString() : krConcat({data, "/ignored"});
}

std::string escaped(KRText text) {
  std::string result;
  for (const char c : text.view()) {
    switch (c) {
      case '\\':
        result += "\\\\";
        break;
      case '\t':
        result += "\\t";
        break;
      case '\n':
        result += "\\n";
        break;
      case '\r':
        result += "\\r";
        break;
      default:
        result += c;
    }
  }
  return result;
}

KRString unescaped(std::string_view text) {
  std::string result;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\' || i + 1 == text.size()) {
      result += text[i];
      continue;
    }
    const char c = text[++i];
    result += c == 't' ? '\t' : c == 'n' ? '\n' : c == 'r' ? '\r' : c;
  }
  return KRString(result);
}

/// The text up to the mark, which is taken away with it.
std::string_view cutAt(std::string_view& rest, char mark) {
  const size_t end = std::min(rest.find(mark), rest.size());
  const std::string_view part = rest.substr(0, end);
  rest.remove_prefix(std::min(end + 1, rest.size()));
  return part;
}

bool isKey(std::string_view text) {
  return text.size() == kKeyLength && text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

KRString today() {
  const std::time_t now = std::time(nullptr);
  std::tm day{};
  std::array<char, 16> text{};
  if (gmtime_r(&now, &day) == nullptr) return {};
  return KRString(std::string_view(text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d", &day)));
}

std::string namesOf(const KRIssueObject& finding) {
  const KRPersonArray persons = finding.persons();
  std::string names;
  for (size_t i = 0; i < std::min(persons.count(), kNames); ++i) {
    names += (i == 0 ? "" : ", ") + std::string(persons.at(i)->showName().view());
  }
  if (persons.count() > kNames) names += " and " + std::to_string(persons.count() - kNames) + " more";
  return names;
}

}  // namespace

KRString KRIgnoredFindings::path(const KRString& bookID) {
  const KRString parent = folder();
  if (parent.isNothing()) return {};
  return krConcat({parent, "/", KRDigest::sha256(bookID.view()), kEnding});
}

KRResult<KRIgnoredFindings> KRIgnoredFindings::ofBook(const KRString& bookID) {
  KRIgnoredFindings ignored(bookID);
  if (const KRResult<void> read = ignored.read(); !read) return read.error();
  return ignored;
}

std::vector<KRResult<KRIgnoredFindings>> KRIgnoredFindings::ofAllBooks() {
  std::vector<KRIgnoredFindings> books;
  std::vector<KRResult<KRIgnoredFindings>> all;
  const KRString parent = folder();
  std::vector<std::string> files;
  std::error_code failed;
  for (auto entry = std::filesystem::directory_iterator(std::filesystem::path(parent.view()), failed);
       !failed && entry != std::filesystem::directory_iterator(); entry.increment(failed)) {
    // Others are temporary files, and what is none of ours.
    const bool isOurs = entry->path().extension() == kEnding && isKey(entry->path().stem().string());
    if (isOurs) files.push_back(entry->path().string());
  }
  std::sort(files.begin(), files.end());
  for (const std::string& file : files) {
    KRResult<KRIgnoredFindings> book = ofFile(KRString(file));
    if (!book) {
      all.emplace_back(book.error());
    } else if (!book->entries_.empty()) {
      books.push_back(*std::move(book));
    }
  }
  std::sort(books.begin(), books.end(),
            [](const auto& a, const auto& b) { return a.bookID_.view() < b.bookID_.view(); });
  all.insert(all.begin(), std::make_move_iterator(books.begin()), std::make_move_iterator(books.end()));
  return all;
}

/// The book is the one that the file names, if the file is named by it.
KRResult<KRIgnoredFindings> KRIgnoredFindings::ofFile(const KRString& file) {
  const KRResult<KRBuffer> bytes = KRFile::read(file);
  if (!bytes) return bytes.error();
  std::string_view text = bytes->view();
  cutAt(text, '\n');
  const std::string_view line = cutAt(text, '\n');
  KRString bookID = line.starts_with(kBook) ? unescaped(line.substr(kBook.size())) : KRString();
  if (path(bookID) != file) bookID = KRString();
  KRIgnoredFindings ignored(std::move(bookID));
  if (const KRResult<void> taken = ignored.take(bytes->view(), file); !taken) return taken.error();
  return ignored;
}

KRResult<void> KRIgnoredFindings::read() {
  entries_.clear();
  keys_.clear();
  const KRString file = path(bookID_);
  if (file.isNothing()) return {};
  const KRResult<KRBuffer> bytes = KRFile::read(file);
  if (bytes) return take(bytes->view(), file);
  if (bytes.error().code == KRErrorCode::NotFound) return {};
  return bytes.error();
}

KRResult<void> KRIgnoredFindings::take(std::string_view text, const KRString& path) {
  size_t number = 0;
  const auto damaged = [&] {
    return KRError{KRErrorCode::Damaged, std::string(path.view()) + ":" + std::to_string(number) +
                                             ": this is no file of ignored findings that can be understood"};
  };
  while (!text.empty()) {
    // A file that was cut off ends without the end of a line.
    const bool isWhole = text.find('\n') != std::string_view::npos;
    std::string_view line = cutAt(text, '\n');
    ++number;
    if (!isWhole || (number == 1 && line != kFirstLine)) return damaged();
    if (number == 1) continue;
    if (number == 2) {
      if (!line.starts_with(kBook) || unescaped(line.substr(kBook.size())) != bookID_) return damaged();
      continue;
    }
    if (static_cast<size_t>(std::count(line.begin(), line.end(), '\t')) != kFields - 1) return damaged();
    Entry entry;
    const std::string_view key = cutAt(line, '\t');
    if (!isKey(key)) return damaged();
    entry.key = KRString(key);
    for (KRString* field : {&entry.date, &entry.issueName, &entry.persons, &entry.describe}) {
      *field = unescaped(cutAt(line, '\t'));
    }
    put(std::move(entry));
  }
  if (number < 2) return damaged();
  return {};
}

void KRIgnoredFindings::put(Entry entry) {
  if (keys_.insert(entry.key).second) entries_.push_back(std::move(entry));
}

bool KRIgnoredFindings::holds(const KRIssueObject& finding) const {
  return !keys_.empty() && keys_.count(krFindingKey(finding)) != 0;
}

bool KRIgnoredFindings::add(const KRIssueObject& finding) {
  const KRRef<KRIssue> issue = finding.issue();
  if (!issue) return false;
  Entry entry{krFindingKey(finding), today(), issue->name(), KRString(namesOf(finding)), finding.describe()};
  if (keys_.count(entry.key) != 0) return false;
  added_.push_back(entry);
  put(std::move(entry));
  return true;
}

void KRIgnoredFindings::forget(const KRString& key) {
  // The key may be that of an entry, which goes.
  const KRString gone = key;
  if (keys_.erase(gone) == 0) return;
  const auto isIt = [&](const Entry& entry) { return entry.key == gone; };
  std::erase_if(entries_, isIt);
  if (std::erase_if(added_, isIt) == 0) forgotten_.push_back(gone);
}

std::string KRIgnoredFindings::text() const {
  std::string text;
  text.append(kFirstLine).append("\n").append(kBook).append(escaped(bookID_)).append("\n");
  for (const Entry& entry : entries_) {
    text.append(entry.key.view());
    for (const KRString* field : {&entry.date, &entry.issueName, &entry.persons, &entry.describe}) {
      text.append("\t").append(escaped(*field));
    }
    text.append("\n");
  }
  return text;
}

KRResult<void> KRIgnoredFindings::save() {
  if (!hasChanges()) return {};
  const KRString file = path(bookID_);
  if (file.isNothing()) {
    return KRError{KRErrorCode::InvalidArgument, "there is no folder to keep ignored findings in"};
  }
  if (KRResult<void> made = KRFile::createFolders(folder(), true); !made) return made;
  const KRResult<KRFileLock> lock = KRFileLock::hold(folder());
  if (!lock) return lock.error();
  KRFileWriter::removeLeftovers(file);
  KRIgnoredFindings now(bookID_);
  if (KRResult<void> read = now.read(); !read) return read;
  for (const KRString& key : forgotten_) now.forget(key);
  for (const Entry& entry : added_) now.put(entry);
  KRFile::WriteOptions options;
  options.isPrivate = true;
  const std::string text = now.text();
  KRResult<KRUndoNote> note = KRUndoRecorder::recordFile(file, text, folder());
  if (!note) return note.error();
  KRResult<void> written = KRFile::write(file, text, options);
  if (!written) return written;
  note->keep();
  now.forgotten_.clear();
  *this = std::move(now);
  return {};
}

size_t KRIgnoredFindings::takeOutOf(KRIssueFindResult& result) const {
  if (keys_.empty()) return 0;
  size_t count = 0;
  for (const KRRef<KRIssueContext>& context : result.contexts().copy()) {
    for (const KRRef<KRIssueObject>& finding : context->objects().copy()) {
      if (!holds(*finding)) continue;
      const KRPersonArray persons = finding->persons();
      for (const IKRPerson* person : persons) result.removeObjectForPerson(finding.get(), person);
      context->removeIssueObject(finding.get());
      ++count;
    }
    if (context->objects().isEmpty()) result.removeContext(context.get());
  }
  return count;
}
