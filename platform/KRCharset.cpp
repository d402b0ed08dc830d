#include "platform/KRCharset.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "platform/KRICU.h"

namespace {

struct CloseConverter {
  void operator()(UConverter* converter) const noexcept { ucnv_close(converter); }
};
struct CloseDetector {
  void operator()(UCharsetDetector* detector) const noexcept { ucsdet_close(detector); }
};

/// Names in files are words of these characters; ICU would take others as options.
bool isPlausibleName(std::string_view name) noexcept {
  constexpr std::string_view kOthers = "-_.:+()";
  return !name.empty() && name.size() < 60 && std::all_of(name.begin(), name.end(), [&](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           kOthers.find(c) != std::string_view::npos;
  });
}

/// Writes U+FFFD for what makes no sense, and counts.
void U_CALLCONV countMistake(const void* context, UConverterToUnicodeArgs* arguments, const char*, int32_t,
                             UConverterCallbackReason reason, UErrorCode* status) {
  if (reason > UCNV_IRREGULAR) return;
  constexpr char16_t kReplacement = 0xFFFD;
  ++*static_cast<size_t*>(const_cast<void*>(context));
  *status = U_ZERO_ERROR;
  ucnv_cbToUWriteUChars(arguments, &kReplacement, 1, 0, status);
}

/// Lets the failure stand. ICU's own way of stopping passes over characters that are usually invisible.
void U_CALLCONV stop(const void*, UConverterFromUnicodeArgs*, const char16_t*, int32_t, UChar32,
                     UConverterCallbackReason, UErrorCode*) {}

/// The converter of this name, kept for the thread until it asks for another, because opening one costs more than most
/// values need; null for a name that there is not.
UConverter* converterNamed(std::string_view name) {
  struct Kept {
    std::string name;
    std::unique_ptr<UConverter, CloseConverter> converter;
  };
  thread_local Kept kept;
  if (!isPlausibleName(name)) return nullptr;
  if (kept.converter == nullptr || kept.name != name) {
    UErrorCode status = U_ZERO_ERROR;
    kept.name = name;
    kept.converter.reset(ucnv_open(kept.name.c_str(), &status));
    if (U_FAILURE(status)) kept.converter.reset();
  }
  if (kept.converter != nullptr) ucnv_reset(kept.converter.get());
  return kept.converter.get();
}

/// The lines that are not plain ASCII, up to a size at which a guess is as good as it gets.
std::string sampleOf(std::string_view bytes) {
  constexpr size_t kEnough = size_t{32} << 10U;
  constexpr size_t kLongLine = 2048;
  std::string sample;
  while (!bytes.empty() && sample.size() < kEnough) {
    const size_t end = std::min(bytes.find_first_of("\r\n"), std::min(bytes.size() - 1, kLongLine));
    const std::string_view line = bytes.substr(0, end + 1);
    if (std::any_of(line.begin(), line.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; }))
      sample.append(line);
    bytes.remove_prefix(line.size());
  }
  return sample;
}

bool isMisplaced(char32_t before, char32_t character, char32_t after) noexcept {
  const auto isLetter = [](char32_t each) { return u_isalpha(static_cast<UChar32>(each)) != 0; };
  const auto point = static_cast<UChar32>(character);
  switch (character) {
    case U'ƒ':
      return true;
    case U'’':
      return false;
    case U'…':
      return isLetter(after);
    case U'–':
    case U'—':
    case U'“':
    case U'‘':
    case U'”':
      return isLetter(before) && isLetter(after);
    default:
      break;
  }
  if (u_iscntrl(point) != 0) return true;
  if (isLetter(character) && u_charType(point) != U_MODIFIER_LETTER)
    return u_isUUppercase(point) != 0 && u_isULowercase(static_cast<UChar32>(before)) != 0;
  return isLetter(before) || isLetter(after);
}

constexpr std::string_view kCommonest = "windows-1252";

/// What the bytes beyond ASCII tell beside the guess itself.
class Evidence {
 public:
  explicit Evidence(std::string_view sample) {
    for (size_t i = 0; i < sample.size(); ++i) {
      const auto isHigh = [&](size_t place) {
        return place < sample.size() && static_cast<unsigned char>(sample[place]) >= 0x80;
      };
      if (!isHigh(i)) continue;
      ++high_;
      if (isHigh(i + 1) || (i > 0 && isHigh(i - 1))) ++inRuns_;
    }
  }

  /// Enough to tell the western charsets apart, which differ in few letters.
  bool isMuch() const noexcept { return high_ >= 12; }

  /// Hardly any, measured against what could have been one.
  bool allows(size_t mistakes) const noexcept { return mistakes * 50 <= high_; }

  bool suffices(std::string_view charset, int32_t confidence) const noexcept {
    constexpr int32_t kSure = 50;
    constexpr int32_t kHalfSure = 30;
    // Wide encodings are recognised elsewhere, and no contact is kept in EBCDIC.
    if (charset.starts_with("UTF-") || charset.starts_with("IBM")) return false;
    if (confidence >= kSure) return true;
    // Lists of names are poor language, but whole words beyond ASCII are no western ones.
    constexpr std::string_view kAlphabets[] = {"windows-1251", "KOI8-R",     "ISO-8859-5",   "ISO-8859-7",
                                               "windows-1253", "ISO-8859-8", "windows-1255", "windows-1256"};
    return confidence >= kHalfSure && high_ >= 8 && inRuns_ * 10 >= high_ * 7 &&
           std::find(std::begin(kAlphabets), std::end(kAlphabets), charset) != std::end(kAlphabets);
  }

 private:
  size_t high_ = 0;
  size_t inRuns_ = 0;
};

}  // namespace

void KRUtf8Collector::append(char32_t point) {
  char bytes[U8_MAX_LENGTH];
  int32_t size = 0;
  U8_APPEND_UNSAFE(bytes, size, static_cast<UChar32>(point));
  text_.utf8.append(bytes, static_cast<size_t>(size));
}

void KRUtf8Collector::endLead() {
  if (std::exchange(lead_, u'\0') == 0) return;
  append(0xFFFD);
  ++text_.mistakes;
}

void KRUtf8Collector::putMistake() {
  endLead();
  append(0xFFFD);
  ++text_.mistakes;
}

void KRUtf8Collector::put(std::u16string_view units) {
  constexpr size_t kPiece = 1024;
  char room[kPiece * 3];
  while (!units.empty()) {
    // The units of the basic plane, as many as fit; then one that needs a closer look.
    size_t count = 0;
    size_t size = 0;
    if (lead_ == 0) {
      for (; count < std::min(units.size(), kPiece) && !U16_IS_SURROGATE(units[count]); ++count)
        U8_APPEND_UNSAFE(room, size, static_cast<UChar32>(units[count]));
      text_.utf8.append(room, size);
      units.remove_prefix(count);
      if (units.empty() || !U16_IS_SURROGATE(units.front())) continue;
    }
    const char16_t unit = units.front();
    if (lead_ != 0 && U16_IS_TRAIL(unit)) {
      append(static_cast<char32_t>(U16_GET_SUPPLEMENTARY(std::exchange(lead_, u'\0'), unit)));
    } else {
      endLead();
      if (!U16_IS_SURROGATE(unit)) continue;
      if (U16_IS_LEAD(unit)) {
        lead_ = unit;
      } else {
        putMistake();
      }
    }
    units.remove_prefix(1);
  }
}

KRConvertedText KRUtf8Collector::finish() {
  endLead();
  return std::move(text_);
}

std::optional<KRConvertedText> krConvertFromCharset(std::string_view bytes, std::string_view name) {
  UConverter* converter = converterNamed(name);
  if (converter == nullptr) return std::nullopt;
  size_t mistakes = 0;
  UErrorCode status = U_ZERO_ERROR;
  ucnv_setToUCallBack(converter, countMistake, &mistakes, nullptr, nullptr, &status);
  KRUtf8Collector collector(bytes.size() + bytes.size() / 8);
  const char* source = bytes.data();
  const char* const end = source + bytes.size();
  char16_t units[4096];
  do {
    if (U_FAILURE(status) && status != U_BUFFER_OVERFLOW_ERROR) return std::nullopt;
    status = U_ZERO_ERROR;
    char16_t* target = units;
    ucnv_toUnicode(converter, &target, std::end(units), &source, end, nullptr, 1, &status);
    collector.put({units, static_cast<size_t>(target - units)});
  } while (status == U_BUFFER_OVERFLOW_ERROR);
  if (U_FAILURE(status)) return std::nullopt;
  KRConvertedText text = collector.finish();
  text.mistakes += mistakes;
  return text;
}

std::optional<std::string> krConvertToCharset(std::string_view utf8, std::string_view name) {
  UConverter* converter = converterNamed(name);
  const auto utf16 = converter == nullptr ? std::nullopt : krToUtf16(utf8);
  if (!utf16) return std::nullopt;
  UErrorCode status = U_ZERO_ERROR;
  ucnv_setFallback(converter, 0);
  ucnv_setFromUCallBack(converter, stop, nullptr, nullptr, nullptr, &status);
  std::string bytes;
  const char16_t* source = utf16->data();
  const char16_t* const end = source + utf16->size();
  char room[4096];
  do {
    if (U_FAILURE(status) && status != U_BUFFER_OVERFLOW_ERROR) return std::nullopt;
    status = U_ZERO_ERROR;
    char* target = room;
    ucnv_fromUnicode(converter, &target, std::end(room), &source, end, nullptr, 1, &status);
    bytes.append(room, static_cast<size_t>(target - room));
  } while (status == U_BUFFER_OVERFLOW_ERROR);
  if (U_FAILURE(status)) return std::nullopt;
  return bytes;
}

std::string krUsualCharset(std::string_view name) {
  struct Meant {
    std::string_view said;
    std::string_view meant;
  };
  // By ICU's own names, to which the many spellings of each lead.
  constexpr Meant kMeant[] = {
      {"US-ASCII", "windows-1252"},
      {"ISO-8859-1", "windows-1252"},
      {"ibm-920_P100-1995", "windows-1254"},
      {"ibm-1383_P110-1999", "GB18030"},
      {"windows-936-2000", "GB18030"},
      {"ibm-1386_P100-2001", "GB18030"},
      {"ibm-970_P110_P110-2006_U2", "windows-949"},
      {"ibm-874_P100-1995", "windows-874"},
  };
  UConverter* converter = converterNamed(name);
  UErrorCode status = U_ZERO_ERROR;
  const char* own = converter == nullptr ? nullptr : ucnv_getName(converter, &status);
  if (own == nullptr || U_FAILURE(status)) return std::string(name);
  for (const Meant& each : kMeant) {
    if (each.said == own) return std::string(each.meant);
  }
  return std::string(name);
}

bool krIsWesternCharset(std::string_view charset) noexcept {
  constexpr std::string_view kWestern[] = {kCommonest, "windows-1250", "windows-1254", "ISO-8859-2"};
  return std::find(std::begin(kWestern), std::end(kWestern), charset) != std::end(kWestern);
}

std::optional<KRDetectedText> krDetectCharset(std::string_view bytes) {
  const std::string sample = sampleOf(bytes);
  const Evidence evidence(sample);
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<UCharsetDetector, CloseDetector> detector(ucsdet_open(&status));
  if (U_FAILURE(status)) return std::nullopt;
  ucsdet_setText(detector.get(), sample.data(), static_cast<int32_t>(sample.size()), &status);
  int32_t count = 0;
  const UCharsetMatch** matches = ucsdet_detectAll(detector.get(), &count, &status);
  if (U_FAILURE(status)) return std::nullopt;
  for (int32_t i = 0; i < count; ++i) {
    const char* name = ucsdet_getName(matches[i], &status);
    const int32_t confidence = ucsdet_getConfidence(matches[i], &status);
    if (U_FAILURE(status)) return std::nullopt;
    std::string charset = krUsualCharset(name);
    if (!evidence.suffices(charset, confidence)) continue;
    if (krIsWesternCharset(charset) && !evidence.isMuch()) charset = kCommonest;
    const auto tried = krConvertFromCharset(sample, charset);
    if (!tried || !evidence.allows(tried->mistakes)) continue;
    auto text = krConvertFromCharset(bytes, charset);
    if (text) return KRDetectedText{std::move(charset), std::move(*text)};
  }
  return std::nullopt;
}

size_t krMisplacedCharacters(std::string_view utf8) noexcept {
  size_t count = 0;
  char32_t before = U' ';
  for (size_t position = 0; position < utf8.size();) {
    const char32_t character = krNextCodePoint(utf8, position);
    size_t behind = position;
    const char32_t after = behind < utf8.size() ? krNextCodePoint(utf8, behind) : U' ';
    if (character >= 0x80 && isMisplaced(before, character, after)) ++count;
    before = character;
  }
  return count;
}
