#include "contacts/vcard/KRVCardFile.h"

#include <algorithm>
#include <optional>

#include "contacts/vcard/KRVCardGroupRewriter.h"
#include "contacts/vcard/KRVCardOutline.h"
#include "contacts/vcard/KRVCardRewriter.h"
#include "contacts/vcard/KRVCardWriter.h"
#include "platform/KRFile.h"

namespace {

using Kind = KRVCardPlace::Kind;

/// Bytes of a unit, and the name by which text is written in that encoding without a mark.
struct WideForm {
  size_t unit;
  const char* charset;
};

WideForm wideForm(KRTextEncoding encoding) noexcept {
  switch (encoding) {
    case KRTextEncoding::Utf16LittleEndian:
      return {2, "UTF-16LE"};
    case KRTextEncoding::Utf16BigEndian:
      return {2, "UTF-16BE"};
    case KRTextEncoding::Utf32LittleEndian:
      return {4, "UTF-32LE"};
    case KRTextEncoding::Utf32BigEndian:
      return {4, "UTF-32BE"};
    default:
      return {1, "UTF-8"};
  }
}

/// Walks text and counts the units before a place; places come in rising order.
class UnitCount {
 public:
  UnitCount(std::string_view text, size_t unit) : text_(text), unit_(unit) {}

  size_t bytesBefore(size_t offset) {
    while (at_ < offset) {
      const char32_t point = krNextCodePoint(text_, at_);
      units_ += unit_ == 2 && point > 0xFFFF ? 2 : 1;
    }
    return units_ * unit_;
  }

 private:
  std::string_view text_;
  size_t unit_;
  size_t at_ = 0;
  size_t units_ = 0;
};

bool isASCII(std::string_view text) noexcept {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace

/// A place in `text()` and what is to stand there, in the text's own character set.
struct KRVCardFile::Edit {
  size_t offset;
  size_t size;
  std::string text;
};

KRVCardFile KRVCardFile::read(std::string bytes, const KRVCardNoteSink& notes) {
  KRVCardFile file;
  file.bytes_ = std::move(bytes);
  KRVCardReader reader([&](KRRef<ABPerson> person) { file.cards_.back().person = std::move(person); }, notes);
  reader.setPlaceSink([&](const KRVCardPlace& place) {
    file.cards_.push_back({place.kind, place.offset, place.size, place.line, place.number, place.reason, {}});
    file.places_.emplace_back(place.offset, place.size);
    if (place.kind == Kind::Contact) ++file.contactCount_;
  });
  file.encoding_ = krGuessEncoding(file.bytes_);
  if (!file.isWide()) {
    reader.read(file.bytes_);
    file.encoding_ = reader.encoding();
    if (!reader.legacyCharset().empty()) file.charset_ = reader.legacyCharset();
    return file;
  }
  std::optional<KRDecodedText> decoded = krDecodeText(file.bytes_, KRDecodeOptions::westernFallback());
  if (decoded) file.wideText_ = std::move(decoded->utf8);
  reader.readText(file.wideText_);
  const size_t mark = krMarkSize(file.bytes_, file.encoding_);
  UnitCount count(file.wideText_, wideForm(file.encoding_).unit);
  for (Card& card : file.cards_) {
    const size_t end = card.offset + card.size;
    // Half a unit at the end of the file reads as a whole one.
    const auto place = [&](size_t offset) { return std::min(mark + count.bytesBefore(offset), file.bytes_.size()); };
    card.offset = place(card.offset);
    card.size = place(end) - card.offset;
  }
  file.isExact_ = mark + count.bytesBefore(file.wideText_.size()) == file.bytes_.size();
  return file;
}

KRResult<KRVCardFile> KRVCardFile::open(KRText path, const KRVCardNoteSink& notes) {
  KRResult<KRBuffer> content = KRFile::read(path);
  if (!content) return content.error();
  return read(std::string(content->view()), notes);
}

KRVCardGroup KRVCardFile::groupOf(const Card& card) const {
  const auto index = static_cast<size_t>(&card - cards_.data());
  if (index >= cards_.size() || card.kind != Kind::Group) return {};
  return KRVCardGroup::read(text().substr(places_[index].first, places_[index].second));
}

KRVCardVersion KRVCardFile::version() const {
  const auto last =
      std::find_if(cards_.rbegin(), cards_.rend(), [](const Card& card) { return card.kind == Kind::Contact; });
  return last == cards_.rend() ? KRVCardVersion::V30 : KRVCardOutline(last->person->card()).version();
}

std::string KRVCardFile::addedText(const Changes& changes) const {
  KRVCardLineStyle style;
  const auto contact =
      std::find_if(cards_.begin(), cards_.end(), [](const Card& card) { return card.kind == Kind::Contact; });
  const std::string lineEnd =
      contact == cards_.end() ? "\r\n" : std::string(KRVCardOutline(contact->person->card()).lineEnd());
  style.lineEnd = lineEnd;
  if (!isWide()) style.charset = charset_;
  const KRVCardWriter writer(version(), style);
  std::string cards;
  for (const IKRPerson* person : changes.added) {
    if (person == nullptr) continue;
    const auto UID = changes.UIDs.find(person);
    const auto* record = dynamic_cast<const ABPerson*>(person);
    std::string card =
        record == nullptr || record->card().empty() ? std::string() : KRVCardRewriter::rewritten(*record);
    if (!card.empty() && UID != changes.UIDs.end())
      card = KRVCardRewriter::applied(card, KRVCardGroupRewriter::identifyingEdits(card, UID->second));
    const bool keepsCard = !card.empty() && krIsWellFormed(card) && (isASCII(card) || style.charset == "UTF-8");
    if (keepsCard) {
      cards += card;
      if (cards.back() != '\n' && cards.back() != '\r') cards += lineEnd;
    } else {
      writer.write(*person, cards);
    }
  }
  for (const KRVCardGroup& group : changes.newGroups) cards += KRVCardGroupRewriter::card(group, version(), style);
  return cards;
}

KRResult<void> KRVCardFile::gather(const Changes& changes, std::vector<Edit>& edits) const {
  std::vector<bool> isTaken(cards_.size(), false);
  const auto take = [&](size_t index) {
    if (index >= cards_.size() || isTaken[index]) return false;
    isTaken[index] = true;
    return true;
  };
  const std::string charset = isWide() ? "UTF-8" : charset_;
  const auto textOf = [&](size_t index) { return text().substr(places_[index].first, places_[index].second); };
  const auto add = [&](size_t index, std::vector<KRVCardEdit> ofCard) {
    for (KRVCardEdit& edit : ofCard)
      edits.push_back({places_[index].first + edit.offset, edit.size, std::move(edit.bytes)});
  };
  const KRError invalid{KRErrorCode::InvalidArgument, "a card is not in the file, or changed twice"};
  for (const size_t index : changes.removed) {
    if (!take(index)) return invalid;
    edits.push_back({places_[index].first, places_[index].second, {}});
  }
  for (const auto& [index, person] : changes.changed) {
    if (person == nullptr || !take(index) || cards_[index].kind != Kind::Contact) return invalid;
    if (person->card() != textOf(index)) {
      return KRError{KRErrorCode::Changed, "card " + std::to_string(cards_[index].number) +
                                               " of the file is not the one that the contact was read from"};
    }
    add(index, KRVCardRewriter::edits(*person, charset));
    const auto UID = changes.UIDs.find(person);
    if (UID != changes.UIDs.end())
      add(index, KRVCardGroupRewriter::identifyingEdits(textOf(index), UID->second, charset));
  }
  for (const auto& [index, change] : changes.groups) {
    if (!take(index) || cards_[index].kind != Kind::Group) return invalid;
    add(index, KRVCardGroupRewriter::edits(textOf(index), change, charset));
  }
  if (changes.added.empty() && changes.newGroups.empty()) return {};
  // A card without its end would take in what stands behind it.
  const bool endsOpen = !cards_.empty() && cards_.back().kind == Kind::Lost && !isTaken.back();
  const size_t place = endsOpen ? places_.back().first : text().size();
  std::string cards = addedText(changes);
  const bool isOpenLine = place > 0 && text()[place - 1] != '\n' && text()[place - 1] != '\r';
  const bool isFirst = place == krMarkSize(bytes_, encoding_);
  if (isOpenLine && !isFirst && !cards.empty()) cards.insert(0, "\r\n");
  edits.push_back({place, 0, std::move(cards)});
  return {};
}

KRResult<std::string> KRVCardFile::applied(std::vector<Edit> edits) const {
  std::stable_sort(edits.begin(), edits.end(), [](const Edit& a, const Edit& b) { return a.offset < b.offset; });
  const WideForm form = wideForm(encoding_);
  const size_t mark = isWide() ? krMarkSize(bytes_, encoding_) : 0;
  UnitCount count(wideText_, form.unit);
  const auto placeOf = [&](size_t offset) { return isWide() ? mark + count.bytesBefore(offset) : offset; };
  std::string result;
  result.reserve(bytes_.size() + 1024);
  size_t done = 0;
  for (const Edit& edit : edits) {
    const size_t begin = placeOf(edit.offset);
    result.append(bytes_, done, begin - done);
    done = placeOf(edit.offset + edit.size);
    if (!isWide()) {
      result += edit.text;
      continue;
    }
    if (edit.text.empty()) continue;
    const std::optional<std::string> encoded = krEncodeWith(KRText(std::string_view(edit.text)), form.charset);
    if (!encoded) return KRError{KRErrorCode::Failed, "text cannot be written as " + std::string(form.charset)};
    result += *encoded;
  }
  return result.append(bytes_, done, std::string::npos);
}

KRResult<KRVCardFile> KRVCardFile::with(const Changes& changes) const {
  std::vector<Edit> edits;
  const KRResult<void> gathered = gather(changes, edits);
  if (!gathered) return gathered.error();
  if (!isExact_ && !edits.empty()) {
    return KRError{KRErrorCode::Damaged, "the text of the file does not lead back to its bytes"};
  }
  KRResult<std::string> bytes = applied(std::move(edits));
  if (!bytes) return bytes.error();
  KRVCardFile file = read(*std::move(bytes));
  const auto persons = static_cast<size_t>(
      std::count_if(changes.added.begin(), changes.added.end(), [](const IKRPerson* each) { return each != nullptr; }));
  const size_t added = persons + changes.newGroups.size();
  const bool isAsMeant = file.cards_.size() == cards_.size() - changes.removed.size() + added &&
                         (!isWide() || file.encoding_ == encoding_);
  if (!isAsMeant) return KRError{KRErrorCode::Damaged, "the changed file would not be read back as meant"};
  return file;
}
