#include "platform/KRTransliteration.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <utility>

#include "platform/KRCaseFolding.h"
#include "platform/KRHanReading.h"
#include "platform/KRICU.h"
#include "platform/KRLatinSpacing.h"

namespace {

char upperAscii(char c) noexcept {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

/// The result for plain ASCII, which needs no memory but the result's own.
KRString fromAscii(std::string_view text) {
  size_t size = text.size();
  KRLatinSpacing counting;
  for (const char c : text)
    size += static_cast<size_t>(counting.before(kKRLatinAsciiTraits[static_cast<unsigned char>(c)]));
  if (size == 0) return ""_kr;
  KRSlab* slab = KRSlab::create(static_cast<uint32_t>(size));
  char* place = slab->bytes();
  KRLatinSpacing spacing;
  for (const char c : text) {
    if (spacing.before(kKRLatinAsciiTraits[static_cast<unsigned char>(c)])) *place++ = ' ';
    *place++ = upperAscii(c);
  }
  KRString result = KRString::slice(slab, 0, static_cast<uint32_t>(size));
  slab->release();
  return result;
}

/// Whether the character may stand for other Han characters: an enclosed or squared one, a compatibility form, a
/// radical. The blocks that hold only plain ideographs are ruled out first.
bool mayStandForOthers(char32_t character) noexcept {
  constexpr std::pair<char32_t, char32_t> kBlocks[] = {
      {0x2E80, 0x33FF}, {0xF900, 0xFAFF}, {0x1F200, 0x1F2FF}, {0x2F800, 0x2FA1F}};
  const auto isInside = [&](const auto& block) { return character >= block.first && character <= block.second; };
  if (std::none_of(std::begin(kBlocks), std::end(kBlocks), isInside)) return false;

  constexpr std::pair<char32_t, char32_t> kEnclosed[] = {
      {0x3192, 0x319F}, {0x3220, 0x3247},   {0x3280, 0x32B0},   {0x32C0, 0x32CB},   {0x3358, 0x3370},  {0x337B, 0x337F},
      {0x33E0, 0x33FE}, {0x1F210, 0x1F212}, {0x1F214, 0x1F23A}, {0x1F240, 0x1F248}, {0x1F250, 0x1F251}};
  if (std::any_of(std::begin(kEnclosed), std::end(kEnclosed), isInside)) return true;
  const auto point = static_cast<UChar32>(character);
  UErrorCode status = U_ZERO_ERROR;
  return u_hasBinaryProperty(point, UCHAR_IDEOGRAPHIC) != 0 || uscript_getScript(point, &status) == USCRIPT_HAN;
}

/// Appends what a Han character stands for; false when ICU fails.
bool appendPlain(std::u32string& characters, char32_t character) {
  if (!mayStandForOthers(character)) {
    characters += character;
    return true;
  }
  UErrorCode status = U_ZERO_ERROR;
  const UNormalizer2* normalizer = unorm2_getNFKCInstance(&status);
  if (U_FAILURE(status)) return false;
  char16_t source[2];
  int32_t size = 0;
  U16_APPEND_UNSAFE(source, size, static_cast<UChar32>(character));
  const auto plain = krFilled(32, [&](char16_t* buffer, int32_t capacity, UErrorCode* failed) {
    return unorm2_normalize(normalizer, source, size, buffer, capacity, failed);
  });
  if (!plain) return false;
  for (int32_t i = 0; i < static_cast<int32_t>(plain->size());) {
    UChar32 point = 0;
    U16_NEXT_UNSAFE(plain->data(), i, point);
    characters += static_cast<char32_t>(point);
  }
  return true;
}

/// The reading of the character at `place`; four characters are read otherwise before a certain other one.
std::string_view readingAt(std::u32string_view characters, size_t place) noexcept {
  struct Exception {
    char32_t character;
    char32_t before;
    std::string_view reading;
  };
  constexpr Exception kExceptions[] = {
      {U'藏', U'文', "ZANG"}, {U'重', U'庆', "CHONG"}, {U'沈', U'阳', "SHEN"}, {U'秘', U'鲁', "BI"}};
  for (const Exception& each : kExceptions) {
    if (characters[place] != each.character) continue;
    std::u32string_view rest = characters.substr(place + 1);
    if (rest.starts_with(U' ')) rest.remove_prefix(1);
    if (rest.starts_with(each.before)) return each.reading;
  }
  return krHanReading(characters[place]);
}

/// The text's characters with those that stand for others replaced and with spaces set; false when ICU fails.
bool spread(std::string_view text, std::u32string& spaced) {
  std::u32string plain;
  plain.reserve(text.size());
  for (size_t position = 0; position < text.size();) {
    if (!appendPlain(plain, krNextCodePoint(text, position))) return false;
  }
  spaced.reserve(plain.size() * 2);
  KRLatinSpacing spacing;
  for (const char32_t character : plain) {
    if (spacing.before(krLatinTraitsOf(character))) spaced += U' ';
    spaced += character == U'｡' ? U'.' : character;
  }
  return true;
}

std::optional<std::u16string> normalized(const UNormalizer2* form, std::u16string_view text) {
  return krFilled(text.size() + 16, [&](char16_t* buffer, int32_t capacity, UErrorCode* status) {
    return unorm2_normalize(form, text.data(), static_cast<int32_t>(text.size()), buffer, capacity, status);
  });
}

/// Takes the marks off and puts all in upper case; nothing when ICU fails.
std::optional<std::u16string> bareUpper(std::u16string_view text) {
  UErrorCode status = U_ZERO_ERROR;
  const UNormalizer2* apart = unorm2_getNFDInstance(&status);
  const UNormalizer2* together = unorm2_getNFCInstance(&status);
  if (U_FAILURE(status)) return std::nullopt;
  const auto marked = normalized(apart, text);
  if (!marked) return std::nullopt;
  std::u16string bare;
  bare.reserve(marked->size());
  for (int32_t i = 0; i < static_cast<int32_t>(marked->size());) {
    const int32_t begin = i;
    UChar32 point = 0;
    U16_NEXT_UNSAFE(marked->data(), i, point);
    if (u_charType(point) != U_NON_SPACING_MARK)
      bare.append(*marked, static_cast<size_t>(begin), static_cast<size_t>(i - begin));
  }
  const auto composed = normalized(together, bare);
  if (!composed) return std::nullopt;
  return krFilled(composed->size() + 8, [&](char16_t* buffer, int32_t capacity, UErrorCode* failed) {
    return u_strToUpper(buffer, capacity, composed->data(), static_cast<int32_t>(composed->size()), "", failed);
  });
}

/// The results for the characters of the first alphabets (Latin, Greek, Cyrillic, Hebrew, Arabic and some more). There
/// a character's result depends on no other: without marks nothing composes, and upper case knows no context.
class FirstAlphabets {
 public:
  static constexpr char32_t kEnd = 0x900;

  FirstAlphabets() {
    std::u16string all;
    for (char16_t unit = 0x80; unit < kEnd; ++unit) {
      all += unit;
      all += u' ';
    }
    const auto results = bareUpper(all);
    const auto utf8 = results ? krToUtf8(*results) : std::nullopt;
    if (!utf8) return;
    size_t begin = 0;
    for (Entry& entry : entries_) {
      const size_t end = utf8->find(' ', begin);
      if (end - begin > entry.bytes.size()) return;
      std::copy(utf8->begin() + static_cast<std::ptrdiff_t>(begin), utf8->begin() + static_cast<std::ptrdiff_t>(end),
                entry.bytes.begin());
      entry.size = static_cast<uint8_t>(end - begin);
      begin = end + 1;
    }
    isGood_ = true;
  }

  /// False when ICU failed.
  bool isGood() const noexcept { return isGood_; }
  /// The result for a character from U+0080 up to below `kEnd`; empty for a mark.
  std::string_view result(char32_t character) const noexcept {
    const Entry& entry = entries_[character - 0x80];
    return {entry.bytes.data(), entry.size};
  }

 private:
  struct Entry {
    std::array<char, 7> bytes = {};
    uint8_t size = 0;
  };
  std::array<Entry, kEnd - 0x80> entries_;
  bool isGood_ = false;
};

const FirstAlphabets& firstAlphabets() {
  static const auto* const alphabets = new FirstAlphabets;
  return *alphabets;
}

/// The result of spaced characters that are Chinese, ASCII or of the first alphabets; nothing when there is another
/// one.
std::optional<std::string> quickResult(std::u32string_view characters) {
  const FirstAlphabets& alphabets = firstAlphabets();
  if (!alphabets.isGood()) return std::nullopt;
  std::string result;
  result.reserve(characters.size() * 4);
  for (size_t i = 0; i < characters.size(); ++i) {
    const char32_t character = characters[i];
    if (character < 0x80) {
      result += upperAscii(static_cast<char>(character));
    } else if (character < FirstAlphabets::kEnd) {
      result += alphabets.result(character);
    } else {
      const std::string_view reading = readingAt(characters, i);
      if (reading.empty()) return std::nullopt;
      result += reading;
    }
  }
  return result;
}

/// What sorting needs to know of a character.
struct SortKey {
  /// The caseless key of the character's result.
  std::array<char, 8> bytes = {};
  uint8_t size = 0;
  KRLatinTraits traits;
};

constexpr auto kAsciiKeys = [] {
  std::array<SortKey, 128> table = {};
  for (size_t c = 0; c < table.size(); ++c) {
    const bool isUpper = c >= 'A' && c <= 'Z';
    table[c] = {{static_cast<char>(isUpper ? c + 'a' - 'A' : c)}, 1, kKRLatinAsciiTraits[c]};
  }
  return table;
}();

/// That of the other characters of the first alphabets.
class FirstKeys {
 public:
  static constexpr char32_t kEnd = FirstAlphabets::kEnd;

  FirstKeys() {
    const FirstAlphabets& alphabets = firstAlphabets();
    isGood_ = alphabets.isGood();
    for (char32_t character = 0x80; character < kEnd && isGood_; ++character) {
      const KRString key = krCaselessKey(alphabets.result(character));
      SortKey& entry = entries_[character - 0x80];
      isGood_ = key.view().size() <= entry.bytes.size();
      if (isGood_) std::copy(key.view().begin(), key.view().end(), entry.bytes.begin());
      entry.size = static_cast<uint8_t>(key.view().size());
      entry.traits = krLatinTraitsOf(character);
    }
  }

  /// False when ICU failed.
  bool isGood() const noexcept { return isGood_; }
  const SortKey& operator[](char32_t character) const noexcept { return entries_[character - 0x80]; }

 private:
  std::array<SortKey, kEnd - 0x80> entries_;
  bool isGood_ = false;
};

/// The key of a character below `FirstKeys::kEnd`; null when ICU failed.
const SortKey* firstKey(char32_t character) {
  if (character < 0x80) return &kAsciiKeys[character];
  static const auto* const first = new FirstKeys;
  return first->isGood() ? &(*first)[character] : nullptr;
}

/// The reading of an ideograph that stands for no other, by what follows it; empty for any other character.
std::string_view plainReading(char32_t character, std::string_view rest) noexcept {
  if (mayStandForOthers(character)) return {};
  std::array<char32_t, 3> following = {character};
  size_t count = 1;
  for (size_t at = 0; at < rest.size() && count < following.size();) following[count++] = krNextCodePoint(rest, at);
  return readingAt(std::u32string_view(following.data(), count), 0);
}

/// Bytes that the key of so many bytes takes at the most: eight and a space for two of the first alphabets. A few more
/// are written before it is known how many count.
constexpr size_t roomFor(size_t size) noexcept {
  return size * 9 / 2 + 2 * sizeof(SortKey::bytes);
}

/// Writes the key of a text whose characters are Chinese, ASCII or of the first alphabets; its end, or null when there
/// is another one.
char* writeQuickKey(std::string_view text, char* place) {
  constexpr KRLatinTraits kIdeograph = {.isLetter = true, .isMark = false, .setsOffLetter = true, .isSetOff = true};
  KRLatinSpacing spacing;
  for (size_t at = 0; at < text.size();) {
    const char32_t character = krNextCodePoint(text, at);
    if (character < FirstKeys::kEnd) {
      const SortKey* key = firstKey(character);
      if (key == nullptr) return nullptr;
      *place = ' ';
      place += spacing.before(key->traits) ? 1 : 0;
      std::memcpy(place, key->bytes.data(), sizeof key->bytes);
      place += key->size;
      continue;
    }
    const std::string_view reading = plainReading(character, text.substr(at));
    if (reading.empty()) return nullptr;
    *place = ' ';
    place += spacing.before(kIdeograph) ? 1 : 0;
    for (const char c : reading) *place++ = static_cast<char>(c | 0x20);
  }
  return place;
}

/// Appends the same; false, with nothing appended, where there is none.
bool appendQuickKey(std::string& to, std::string_view text) {
  std::array<char, 512> few;
  std::string many;
  char* room = few.data();
  if (roomFor(text.size()) > few.size()) {
    many.resize(roomFor(text.size()));
    room = many.data();
  }
  const char* end = writeQuickKey(text, room);
  if (end == nullptr) return false;
  to.append(room, static_cast<size_t>(end - room));
  return true;
}

/// The result of any spaced characters; nothing when ICU fails.
std::optional<std::string> fullResult(std::u32string_view characters) {
  std::u16string latin;
  latin.reserve(characters.size() * 4);
  for (size_t i = 0; i < characters.size(); ++i) {
    const std::string_view reading = readingAt(characters, i);
    if (!reading.empty()) {
      latin.append(reading.begin(), reading.end());
      continue;
    }
    char16_t units[2];
    int32_t size = 0;
    U16_APPEND_UNSAFE(units, size, static_cast<UChar32>(characters[i]));
    latin.append(units, static_cast<size_t>(size));
  }
  const auto upper = bareUpper(latin);
  return upper ? krToUtf8(*upper) : std::nullopt;
}

}  // namespace

KRString krMandarinLatinUpper(KRText text) {
  if (text.isNothing() || text.size() > kKRICULimit / 4) return {};
  const std::string_view bytes = text.view();
  if (std::all_of(bytes.begin(), bytes.end(), [](char c) { return (c & 0x80) == 0; })) return fromAscii(bytes);
  std::u32string characters;
  if (!spread(bytes, characters)) return {};
  std::optional<std::string> result = quickResult(characters);
  if (!result) result = fullResult(characters);
  return result ? KRString::trusted(*result) : KRString();
}

bool krAppendMandarinLatinKey(std::string& to, KRText text) {
  if (text.isNothing()) return false;
  if (text.size() <= kKRICULimit / 4 && appendQuickKey(to, text.view())) return true;
  const KRString capitals = krMandarinLatinUpper(text);
  to += krCaselessKey(capitals).view();
  return !capitals.isNothing();
}
