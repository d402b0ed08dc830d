#include "import/KRPersonLoad.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "contacts/model/ABPerson.h"
#include "contacts/vcard/KRVCardReader.h"
#include "import/KRVCardPieces.h"
#include "platform/KRFile.h"
#include "platform/KRThread.h"

namespace {

constexpr uint64_t kStateMask = 0xFFFFFFFFU;
constexpr uint64_t kOneRun = kStateMask + 1;

constexpr uint64_t withState(uint64_t progress, int32_t state) noexcept {
  return (progress & ~kStateMask) | static_cast<uint64_t>(state);
}

/// In single precision, as everywhere in percentages.
double percentOf(size_t done, size_t all) noexcept {
  return static_cast<double>(static_cast<float>(done) * 100.0F / static_cast<float>(all));
}

/// How many lines end in the text; a carriage return and the line feed behind it are one end.
size_t lineEnds(std::string_view text) noexcept {
  size_t count = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\n' || (text[i] == '\r' && (i + 1 == text.size() || text[i + 1] != '\n'))) ++count;
  }
  return count;
}

/// The white space that a text begins with.
std::string_view blankStart(std::string_view text) noexcept {
  return text.substr(0, text.find_first_not_of(" \t\r\n"));
}

}  // namespace

KRPersonLoad::~KRPersonLoad() = default;

bool KRPersonLoad::isFile(const KRString& path) noexcept {
  const KRFile::Kind kind = KRFile::kind(path);
  return kind != KRFile::Kind::Missing && kind != KRFile::Kind::Folder;
}

KRRef<KRPersonLoad> KRPersonLoad::initWithFile(const KRString& path) {
  return isFile(path) ? krMake<KRPersonLoad>(path) : KRRef<KRPersonLoad>();
}

int32_t KRPersonLoad::state() const noexcept {
  return static_cast<int32_t>(progress_.load() & kStateMask);
}

bool KRPersonLoad::start() {
  uint64_t before = progress_.load();
  uint64_t loading = 0;
  do {
    if (before == withState(before, kLoading)) return true;
    loading = withState(before, kLoading) + kOneRun;
  } while (!progress_.compare_exchange_weak(before, loading));
  const KRRef<KRPersonLoad> self(this);
  if (krDetach(self, [this, loading] { load(Run(*this, loading)); })) return true;
  progress_.compare_exchange_strong(loading, withState(loading, kEnded));
  return false;
}

void KRPersonLoad::stop() {
  uint64_t before = progress_.load();
  while (before == withState(before, kLoading)) {
    if (progress_.compare_exchange_weak(before, withState(before, kEnded))) return;
  }
}

void KRPersonLoad::loadThreed() {
  load(Run(*this, withState(progress_.load(), kLoading)));
}

void KRPersonLoad::load(const Run& run) {
  sendStart();
  readPersons(run);
  // Only this run's own state: the loader may have been started again.
  uint64_t now = progress_.load();
  while (withState(now, kLoading) == run.whileLoading_) {
    if (progress_.compare_exchange_weak(now, withState(now, kEnded))) break;
  }
  if (const auto listener = delegate()) listener->KRPersonLoadDelegate_end(*this);
}

void KRPersonLoad::readPersons(const Run& run) {
  KRBuffer bytes;
  if (!filePath_.isNothing()) {
    KRResult<KRBuffer> read = KRFile::read(filePath_);
    if (!read) {
      note({0, 0, true, KRString(read.error().sentence)});
      return;
    }
    bytes = *std::move(read);
  }
  KRVCardPieces pieces(std::move(bytes));
  const bool hasNotes = static_cast<bool>(notes());
  size_t line = 1;
  const auto lineAfter = [&](std::string_view before) {
    return line + lineEnds(before.substr(0, before.size() - pieces.rest().size()));
  };
  if (pieces.count() < 2) {
    note({0, 0, true, "the file holds no END:VCARD"_kr});
    return;
  }
  // The text after the last card counts too. Kept so on purpose.
  sendNumber(static_cast<int64_t>(pieces.count()));
  const size_t cards = pieces.count() - 1;
  size_t done = 0;
  while (run.isLoading() && done < cards) {
    const std::string_view before = pieces.rest();
    pieces.next();
    const KRText card = standBengin(pieces.card());
    const KRRef<IKRPerson> person = ABPerson::initWithVCardRepresentation(card);
    if (hasNotes) {
      noteCard(pieces.card(), line, done + 1, static_cast<bool>(person));
      line = lineAfter(before);
    }
    if (!run.isLoading()) return;
    ++done;
    if (person) sendProgress(percentOf(done, cards), person);
  }
  const std::string_view blank = blankStart(pieces.rest());
  if (hasNotes && run.isLoading() && blank.size() != pieces.rest().size()) {
    note({line + lineEnds(blank), 0, false, "the text behind the last END:VCARD is not read"_kr});
  }
}

void KRPersonLoad::noteCard(std::string_view card, size_t line, size_t number, bool isRead) const {
  const std::string_view begun = standBengin(card).view();
  const size_t first = line + lineEnds(card.substr(0, card.size() - begun.size()));
  size_t persons = 0;
  bool isLossTold = false;
  KRVCardReader reader([&](const KRRef<ABPerson>&) { ++persons; },
                       [&](const KRVCardNote& each) {
                         isLossTold = isLossTold || each.isCardLost;
                         note({first + each.line - 1, number, each.isCardLost, KRString(each.sentence())});
                       });
  reader.read(begun);
  const size_t place = first + lineEnds(blankStart(begun));
  if (reader.counts().groups != 0) {
    note({place, number, false, "the card is that of a group"_kr});
  } else if (!isRead && !isLossTold) {
    note({place, number, true, "no BEGIN:VCARD begins the card"_kr});
  } else if (isRead && persons > 1) {
    note({place, number, true, "another card before the END:VCARD is not read"_kr});
  }
}

void KRPersonLoad::loadThreed2() {
  sendStart();
  if (!filePath_.isNothing()) {
    std::vector<KRRef<ABPerson>> persons;
    KRVCardReader reader([&](KRRef<ABPerson> person) { persons.push_back(std::move(person)); });
    if (const KRResult<KRBuffer> read = KRFile::read(filePath_)) reader.read(read->view());
    for (size_t i = 0; i < persons.size(); ++i) sendProgress(percentOf(i + 1, persons.size()), persons[i]);
  }
  sendEnd();
}

void KRPersonLoad::sendStart() {
  if (const auto listener = delegate()) listener->KRPersonLoadDelegate_start(*this);
}

void KRPersonLoad::sendNumber(int64_t total) {
  if (const auto listener = delegate()) listener->KRPersonLoadDelegate_allNumber(total, *this);
}

void KRPersonLoad::sendProgress(double progress, const KRRef<IKRPerson>& person) {
  if (const auto listener = delegate()) listener->KRPersonLoadDelegate_progress(progress, person, *this);
}

void KRPersonLoad::sendEnd() {
  uint64_t before = progress_.load();
  while (!progress_.compare_exchange_weak(before, withState(before, kEnded))) {
  }
  if (const auto listener = delegate()) listener->KRPersonLoadDelegate_end(*this);
}

KRText KRPersonLoad::standBengin(KRText text) noexcept {
  const size_t begin = text.view().find("BEGIN:VCARD");
  if (begin == std::string_view::npos || begin == 0) return text;
  return text.view().substr(begin);
}

void KRPersonLoad::note(const KRPersonLoadNote& note) const {
  if (const KRPersonLoadNoteSink sink = notes()) sink(note);
}
