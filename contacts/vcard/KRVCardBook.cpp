#include "contacts/vcard/KRVCardBook.h"

#include <filesystem>
#include <span>
#include <system_error>
#include <utility>

#include "contacts/vcard/KRVCardReadAhead.h"
#include "platform/KRFileReader.h"

namespace {

constexpr std::string_view kIDStart = "vcard:";

/// Whether the bytes hold anything but white space and byte-order marks.
bool isBlank(std::string_view bytes) noexcept {
  return bytes.find_first_not_of(std::string_view(" \t\r\n\0\xEF\xBB\xBF\xFE\xFF", 10)) == std::string_view::npos;
}

}  // namespace

KRString KRVCardBook::fileOfID(KRText ID) {
  return ID.view().starts_with(kIDStart) ? KRString(ID.view().substr(kIDStart.size())) : KRString();
}

KRString KRVCardBook::IDForFile(KRText path) {
  std::error_code error;
  const std::filesystem::path whole = std::filesystem::absolute(std::filesystem::path(path.view()), error);
  if (error) return krConcat({kIDStart, path});
  // Through links, so that a file is one book by whichever of its names it is opened.
  const std::filesystem::path real = std::filesystem::weakly_canonical(whole, error);
  return KRString(std::string(kIDStart) + (error ? whole.lexically_normal() : real).string());
}

KRString KRVCardBook::nameForFile(KRText path) {
  return KRString(std::filesystem::path(path.view()).filename().string());
}

KRResult<KRRef<KRVCardBook>> KRVCardBook::open(KRText path, const KRVCardNoteSink& notes) {
  auto book = krMake<KRVCardBook>(IDForFile(path), nameForFile(path));
  const KRResult<Summary> read = book->addFile(path, notes);
  if (!read) return read.error();
  book->place_ = KRString(path);
  return book;
}

KRString KRVCardBook::kind() const {
  return "vcard"_kr;
}

KRVCardReader::PersonSink KRVCardBook::sink() {
  // The person is new, so there is no need to look whether it is there already.
  return [this](KRRef<ABPerson> person) {
    person->setAddressBook(this);
    persons_.append(std::move(person));
  };
}

KRVCardReader::PersonSink KRVCardBook::groupSink() {
  return [this](KRRef<ABPerson> group) { groupCards_.push_back(std::move(group)); };
}

KRVCardBook::Summary KRVCardBook::summaryOf(const KRVCardReader& reader, bool isEmpty) {
  const KRVCardReader::Counts& counts = reader.counts();
  last_ = {counts.persons, counts.lostCards,  counts.groups,         counts.notes,
           isEmpty,        reader.encoding(), reader.legacyCharset()};
  return last_;
}

KRVCardBook::Summary KRVCardBook::addBytes(std::string_view bytes, const KRVCardNoteSink& notes) {
  KRVCardReader reader(sink(), notes);
  reader.setGroups(groupSink());
  reader.read(bytes);
  return summaryOf(reader, isBlank(bytes));
}

KRResult<KRVCardBook::Summary> KRVCardBook::addFrom(KRFileReader& file, const KRVCardNoteSink& notes) {
  KRVCardReader reader(sink(), notes);
  reader.setGroups(groupSink());
  KRVCardReadAhead ahead(reader);
  bool isEmpty = true;
  while (true) {
    const std::span<char> room = ahead.room();
    const KRResult<size_t> count = file.read(room.data(), room.size());
    if (!count) {
      ahead.catchUp();
      summaryOf(reader, isEmpty);
      return count.error();
    }
    isEmpty = isEmpty && isBlank({room.data(), *count});
    ahead.feedRoom(*count);
    if (*count < room.size()) break;
  }
  ahead.finish();
  return summaryOf(reader, isEmpty);
}

KRResult<KRVCardBook::Summary> KRVCardBook::addFile(KRText path, const KRVCardNoteSink& notes) {
  KRResult<KRFileReader> file = KRFileReader::open(path);
  if (!file) return file.error();
  KRResult<Summary> read = addFrom(*file, notes);
  if (!read) return KRError{read.error().code, read.error().sentence + " " + std::string(nameForFile(path).view())};
  return read;
}

KRResult<KRVCardBook::Summary> KRVCardBook::addStandardInput(const KRVCardNoteSink& notes) {
  KRFileReader file = KRFileReader::standardInput();
  return addFrom(file, notes);
}
