#include "contacts/model/KRObjectPersonName.h"

#include <algorithm>
#include <array>
#include <string>

#include "contacts/model/KRDecoding.h"
#include "contacts/model/KRDescribing.h"
#include "platform/KRHash.h"
#include "platform/KRKeyedArchiver.h"

namespace {

struct Range {
  char32_t first;
  char32_t last;
};

/// The characters of names that are written without spaces, family name first: ideographs, kana, hangul, bopomofo, and
/// the marks that stand among them.
constexpr Range kEastAsian[] = {
    {0x1100, 0x11FF}, {0x2E80, 0x2FDF}, {0x3005, 0x3007}, {0x3021, 0x3029},   {0x3031, 0x3035},
    {0x3038, 0x303C}, {0x3041, 0x3096}, {0x3099, 0x30FF}, {0x3105, 0x312F},   {0x3131, 0x318E},
    {0x31A0, 0x31BF}, {0x31F0, 0x31FF}, {0x3400, 0x4DBF}, {0x4E00, 0x9FFF},   {0xA960, 0xA97C},
    {0xAC00, 0xD7FB}, {0xF900, 0xFAFF}, {0xFF66, 0xFFDC}, {0x1AFF0, 0x1B16F}, {0x20000, 0x323AF},
};

bool isEastAsian(KRText text) {
  const std::string_view bytes = text.view();
  for (size_t position = 0; position < bytes.size();) {
    const char32_t point = krNextCodePoint(bytes, position);
    if (point < kEastAsian[0].first) return false;
    const bool known = std::any_of(std::begin(kEastAsian), std::end(kEastAsian),
                                   [&](const Range& range) { return point >= range.first && point <= range.last; });
    if (!known) return false;
  }
  return true;
}

/// What the name as shown is joined of, blanks included.
std::array<KRText, 5> displayPieces(KRText first, KRText middle, KRText last) {
  // Nearly every name begins with a character of an alphabet, which settles the matter.
  if (isEastAsian(last) && isEastAsian(first) && isEastAsian(middle)) return {last, middle, first};
  const auto blank = [](bool isBefore, KRText part) { return isBefore && !part.isEmpty() ? KRText(" ") : KRText(); };
  const bool isFirst = !first.isEmpty();
  return {first, blank(isFirst, middle), middle, blank(isFirst || !middle.isEmpty(), last), last};
}

}  // namespace

void KRObjectPersonName::appendDisplayString(std::string& to, KRText first, KRText middle, KRText last) {
  for (const KRText piece : displayPieces(first, middle, last)) to += piece.view();
}

KRString KRObjectPersonName::displayString(KRText first, KRText middle, KRText last) {
  return KRString::joined(displayPieces(first, middle, last));
}

KRString KRObjectPersonName::displayString() const {
  return displayString(first_, middle_, last_);
}

bool KRObjectPersonName::isEqual(const KRObject* other) const {
  const auto* name = dynamic_cast<const KRObjectPersonName*>(other);
  return name != nullptr && name->first_ == first_ && name->middle_ == middle_ && name->last_ == last_;
}

uint64_t KRObjectPersonName::hash() const {
  return krHashMix(krHashMix(first_.hash(), middle_.hash()), last_.hash());
}

KRString KRObjectPersonName::description() const {
  std::string text = "{first = ";
  krAppendQuoted(text, first_);
  text += ", middle = ";
  krAppendQuoted(text, middle_);
  text += ", last = ";
  krAppendQuoted(text, last_);
  return KRString::trusted(text + "}");
}

KRText KRObjectPersonName::archiveClassName() const {
  return "KRObjectPersonName";
}

void KRObjectPersonName::encodeWithCoder(KRKeyedArchiver& coder) const {
  coder.encode(first_, "first");
  coder.encode(middle_, "middle");
  coder.encode(last_, "last");
}

KRRef<KRObject> KRObjectPersonName::decode(KRKeyedUnarchiver& coder) {
  return krMake<KRObjectPersonName>(krDecodeText(coder, "first"), krDecodeText(coder, "middle"),
                                    krDecodeText(coder, "last"));
}
