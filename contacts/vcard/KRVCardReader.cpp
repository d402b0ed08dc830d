#include "contacts/vcard/KRVCardReader.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <optional>
#include <utility>

#include "contacts/model/KRAddressBook.h"
#include "contacts/vcard/KRVCardStretch.h"
#include "contacts/vcard/KRVCardText.h"

namespace {

/// What tells the encoding of a file stands in its first bytes.
constexpr size_t kStart = size_t{64} << 10U;
/// Larger cards are passed over.
constexpr size_t kLargestCard = size_t{1} << 30U;

constexpr std::string_view kBegin = "BEGIN:VCARD";

/// Where a card begins in a line of other text, as behind the mark of a file that was appended to another; or npos.
size_t findBegin(std::string_view line) noexcept {
  const std::string_view text = krTrimmedBlanks(line);
  if (text.size() < kBegin.size()) return std::string_view::npos;
  const std::string_view tail = text.substr(text.size() - kBegin.size());
  return krEqualsIgnoringCase(tail, kBegin) ? static_cast<size_t>(tail.data() - line.data()) : std::string_view::npos;
}

std::string_view withoutLineEnd(std::string_view line) noexcept {
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
  return line;
}

/// Whether a line of that meaning may be where a card, or one inside it, begins or ends.
bool isFrame(KRVCardMeaning meaning) noexcept {
  return meaning == KRVCardMeaning::Begin || meaning == KRVCardMeaning::End || meaning == KRVCardMeaning::Agent;
}

bool isWide(KRTextEncoding encoding) noexcept {
  return encoding != KRTextEncoding::Utf8 && encoding != KRTextEncoding::Other;
}

}  // namespace

KRVCardReader::KRVCardReader(PersonSink persons, KRVCardNoteSink notes, size_t block)
    : persons_(std::move(persons)), notes_(std::move(notes)), block_(block), enough_(block) {}

void KRVCardReader::startFile(std::string_view start) {
  isStarted_ = true;
  encoding_ = krGuessEncoding(start.substr(0, kStart));
  passed_ = 0;
  lineNumber_ = 1;
  cardNumber_ = 0;
  isInJunk_ = false;
  card_ = nullptr;
  parser_.startDocument();
}

void KRVCardReader::feed(std::string_view bytes) {
  if (bytes.empty()) return;
  std::memcpy(room(bytes.size()).data(), bytes.data(), bytes.size());
  feedRoom(bytes.size());
}

std::span<char> KRVCardReader::room(size_t size) {
  const size_t wanted = buffer_.size() + size;
  if (wanted > buffer_.capacity() && !buffer_.reserve(std::max(wanted, buffer_.capacity() * 2))) throw std::bad_alloc();
  return {buffer_.data() + buffer_.size(), buffer_.capacity() - buffer_.size()};
}

void KRVCardReader::feedRoom(size_t count) {
  buffer_.setSize(buffer_.size() + count);
  if (buffer_.size() >= enough_) runBuffer();
}

void KRVCardReader::runBuffer() {
  size_t mark = 0;
  if (!isStarted_) {
    startFile(buffer_);
    if (!isWide(encoding_)) mark = krMarkSize(buffer_, encoding_);
  }
  if (isWide(encoding_)) {
    enough_ = buffer_.size() * 2;
    return;
  }
  passed_ += mark;
  const size_t done = run(buffer_.view().substr(mark), false);
  passed_ += done;
  keep(buffer_.view().substr(mark + done));
}

void KRVCardReader::keep(std::string_view rest) {
  std::memmove(buffer_.data(), rest.data(), rest.size());
  buffer_.setSize(rest.size());
  // A card that is not whole yet is looked at again when there is twice as much of it.
  enough_ = std::max(block_, buffer_.size() * 2);
}

bool KRVCardReader::readsInPieces() const noexcept {
  return isStarted_ && !isWide(encoding_);
}

void KRVCardReader::readStretch(KRVCardStretch& stretch) {
  startFile({});
  isStarted_ = false;
  parser_.startDocument(stretch.charset);
  stretch.contacts.clear();
  stretch.others.clear();
  // The stretch is the caller's again, also where there was no memory for all of it.
  struct Lent {
    KRVCardStretch*& place;
    ~Lent() { place = nullptr; }
  };
  stretch_ = &stretch;
  {
    const Lent lent{stretch_};
    stretch.size = run(stretch.text, false);
  }
  stretch.lines = lineNumber_ - 1;
  stretch.cards = cardNumber_;
  stretch.endsInJunk = isInJunk_;
  stretch.charsetAfter = parser_.documentCharset();
}

bool KRVCardReader::canTake(const KRVCardStretch& stretch) const noexcept {
  return readsInPieces() && !isInJunk_ && !places_ && buffer_.size() == stretch.known &&
         stretch.text.size() >= enough_ && parser_.documentCharset() == stretch.charset;
}

void KRVCardReader::take(KRVCardStretch& stretch) {
  const size_t linesBefore = lineNumber_ - 1;
  const size_t cardsBefore = cardNumber_;
  size_t done = 0;
  const auto handOutUpTo = [&](size_t count) {
    for (; done < count; ++done) handOutContact(std::move(stretch.contacts[done]));
  };
  for (KRVCardStretch::Other& other : stretch.others) {
    handOutUpTo(other.contacts);
    if (!other.note) {
      handOutGroup(std::move(other.group));
      continue;
    }
    cardNumber_ = cardsBefore + other.note->card;
    note(other.note->reason, linesBefore + other.note->line, other.note->isCardLost);
  }
  handOutUpTo(stretch.contacts.size());
  passed_ += stretch.size;
  lineNumber_ = linesBefore + stretch.lines + 1;
  cardNumber_ = cardsBefore + stretch.cards;
  isInJunk_ = stretch.endsInJunk;
  if (stretch.charsetAfter != stretch.charset) parser_.startDocument(stretch.charsetAfter);
  const std::string_view rest = stretch.text.substr(stretch.size);
  buffer_.setSize(0);
  room(rest.size());
  keep(rest);
}

void KRVCardReader::finish() {
  const KRBuffer rest = std::exchange(buffer_, KRBuffer());
  enough_ = block_;
  if (!isStarted_) {
    read(rest);
    return;
  }
  isStarted_ = false;
  if (isWide(encoding_)) {
    const std::optional<KRDecodedText> text = krDecodeText(rest, KRDecodeOptions::westernFallback());
    if (text) run(text->utf8, true);
    return;
  }
  run(rest, true);
}

void KRVCardReader::read(std::string_view bytes) {
  startFile(bytes);
  isStarted_ = false;
  if (isWide(encoding_)) {
    const std::optional<KRDecodedText> text = krDecodeText(bytes, KRDecodeOptions::westernFallback());
    if (text) run(text->utf8, true);
    return;
  }
  passed_ = krMarkSize(bytes, encoding_);
  run(bytes.substr(passed_), true);
}

void KRVCardReader::readText(std::string_view utf8) {
  startFile({});
  isStarted_ = false;
  run(utf8, true);
}

void KRVCardReader::read(std::string_view bytes, KRAddressBook& book, KRVCardNoteSink notes) {
  KRVCardReader reader([&](const KRRef<ABPerson>& person) { book.addPerson(person.get()); }, std::move(notes));
  reader.read(bytes);
}

KRRef<ABPerson> KRVCardReader::readOne(std::string_view text) {
  // One reader a thread: its blocks are filled with the cards of many calls.
  static thread_local KRRef<ABPerson> person;
  static thread_local KRVCardReader reader([](KRRef<ABPerson> made) {
    if (reader.cardNumber_ == 1) person = std::move(made);
  });
  text.remove_prefix(krMarkSize(text, KRTextEncoding::Utf8));
  const size_t start = std::min(text.find_first_not_of("\r\n"), text.size());
  // It remembers the lines that it met, which would cost more to make than a card to read.
  static thread_local KRVCardLines lines;
  KRVCardLine line;
  lines.start(text.substr(start), true, 1);
  if (lines.next(line) != KRVCardLines::Result::Line || !line.isBegin()) return {};
  reader.startFile({});
  reader.isStarted_ = false;
  reader.run(text.substr(start), true);
  return std::move(person);
}

void KRVCardReader::note(KRVCardReason reason, size_t line, bool isCardLost) {
  if (stretch_ != nullptr) {
    stretch_->others.push_back(
        {stretch_->contacts.size(), KRVCardNote{reason, line, cardNumber_, isCardLost}, KRCardRecord()});
    return;
  }
  ++counts_.notes;
  if (isCardLost) ++counts_.lostCards;
  if (notes_) notes_({reason, line, cardNumber_, isCardLost});
}

void KRVCardReader::tellPlace(KRVCardPlace::Kind kind, const char* end, KRVCardReason reason) {
  if (!places_) return;
  const size_t offset = passed_ + static_cast<size_t>(card_ - text_);
  places_({kind, offset, static_cast<size_t>(end - card_), cardLine_, cardNumber_, reason});
}

void KRVCardReader::startCard(const char* at, size_t line) {
  card_ = at;
  cardLine_ = line;
  depth_ = 0;
  isAfterAgent_ = false;
  isInJunk_ = false;
  ++cardNumber_;
  parser_.start(at, lines_.end());
  lines_.setReturnsEndLines(lines_.endedWithReturn());
}

void KRVCardReader::endCard(const char* end) {
  const std::string_view card(card_, static_cast<size_t>(end - card_));
  using Kind = KRVCardPlace::Kind;
  const bool isTooLarge = card.size() > kLargestCard;
  tellPlace(isTooLarge ? Kind::Lost : parser_.isGroup() ? Kind::Group : Kind::Contact, end, KRVCardReason::TooLarge);
  card_ = nullptr;
  lines_.setReturnsEndLines(true);
  for (const KRVCardParser::Passed& passed : parser_.passed()) note(passed.reason, passed.line, false);
  if (isTooLarge) {
    note(KRVCardReason::TooLarge, cardLine_, true);
    return;
  }
  if (!parser_.isGroup()) {
    handOutContact(parser_.finish(card));
  } else {
    handOutGroup(groups_ || stretch_ != nullptr ? parser_.finish(card) : KRCardRecord());
  }
}

inline void KRVCardReader::handOutContact(KRCardRecord record) {
  if (stretch_ != nullptr) {
    stretch_->contacts.push_back(std::move(record));
    return;
  }
  ++counts_.persons;
  persons_(krMake<ABPerson>(std::move(record)));
}

void KRVCardReader::handOutGroup(KRCardRecord record) {
  if (stretch_ != nullptr) {
    stretch_->others.push_back({stretch_->contacts.size(), std::nullopt, std::move(record)});
    return;
  }
  ++counts_.groups;
  if (groups_) groups_(krMake<ABPerson>(std::move(record)));
}

const char* KRVCardReader::takeOutside(const KRVCardLine& line) {
  if (line.isBegin()) return line.bytes.data();
  if (!line.hasName() && krTrimmedBlanks(line.value).empty()) return nullptr;
  const size_t place = findBegin(withoutLineEnd(line.bytes));
  if (place != std::string_view::npos) return line.bytes.data() + place;
  if (!isInJunk_) note(KRVCardReason::Junk, line.number, false);
  isInJunk_ = true;
  return nullptr;
}

bool KRVCardReader::takeInside(const KRVCardLine& line) {
  if (depth_ == 0 && !isFrame(line.property->meaning)) {
    isAfterAgent_ = false;
    parser_.take(line);
    return true;
  }
  const bool isBegin = line.isBegin();
  const bool opens = isBegin && isAfterAgent_;
  isAfterAgent_ = false;
  if (isBegin && !opens) {
    // The card has lost its end.
    tellPlace(KRVCardPlace::Kind::Lost, line.bytes.data());
    note(KRVCardReason::CutOff, cardLine_, true);
    startCard(line.bytes.data(), line.number);
    return true;
  }
  if (opens) {
    ++depth_;
  } else if (line.isEnd()) {
    if (depth_ == 0) return false;
    --depth_;
  } else if (line.means(KRVCardMeaning::Agent)) {
    const std::string_view value = krTrimmedBlanks(line.value);
    if (krEqualsIgnoringCase(value, kBegin)) {
      ++depth_;
    } else {
      isAfterAgent_ = value.empty();
    }
  } else if (depth_ == 0) {
    parser_.take(line);
  }
  return true;
}

size_t KRVCardReader::run(std::string_view text, bool isWhole) {
  text_ = text.data();
  lines_.start(text, isWhole, lineNumber_);
  KRVCardLine line;
  while (true) {
    const KRVCardLines::Result result = lines_.next(line);
    if (result != KRVCardLines::Result::Line) break;
    if (card_ == nullptr) {
      if (const char* begin = takeOutside(line)) startCard(begin, line.number);
    } else if (!takeInside(line)) {
      endCard(line.bytes.data() + line.bytes.size());
    }
  }
  const char* done = lines_.position();
  lineNumber_ = lines_.number();
  if (card_ != nullptr) {
    const bool isTooLarge = static_cast<size_t>(lines_.end() - card_) > kLargestCard;
    if (isWhole || isTooLarge) {
      const KRVCardReason reason = isTooLarge ? KRVCardReason::TooLarge : KRVCardReason::CutOff;
      tellPlace(KRVCardPlace::Kind::Lost, lines_.end(), reason);
      note(isTooLarge ? KRVCardReason::TooLarge : KRVCardReason::CutOff, cardLine_, true);
    } else {
      // Read again from its start when more of it is there.
      done = card_;
      lineNumber_ = cardLine_;
      --cardNumber_;
    }
    card_ = nullptr;
  }
  return static_cast<size_t>(done - text.data());
}
