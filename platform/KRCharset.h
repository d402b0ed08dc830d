// Charsets by name: what lies between bytes and text when they are not UTF-8.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Text made from bytes of a charset, and how often they made no sense.
struct KRConvertedText {
  /// Well-formed; U+FFFD stands for each mistake.
  std::string utf8;
  size_t mistakes = 0;
};

/// Collects UTF-16 units as UTF-8; an unpaired surrogate becomes U+FFFD and counts as a mistake.
class KRUtf8Collector {
 public:
  explicit KRUtf8Collector(size_t expected) { text_.utf8.reserve(expected); }

  void put(std::u16string_view units);
  /// Something that is not even a unit.
  void putMistake();
  KRConvertedText finish();

 private:
  void append(char32_t point);
  void endLead();

  KRConvertedText text_;
  /// A lead surrogate whose trail has not come yet, or 0.
  char16_t lead_ = 0;
};

/// The text that the bytes spell in exactly the charset of this name; nothing for a name that there is not.
std::optional<KRConvertedText> krConvertFromCharset(std::string_view bytes, std::string_view name);

/// The bytes that spell the text in exactly the charset of this name; nothing for a name that there is not, and for
/// text that it cannot hold.
std::optional<std::string> krConvertToCharset(std::string_view utf8, std::string_view name);

/// The name by which programs mean more than it says ("ISO-8859-1", "GB2312"), replaced by the charset that they mean;
/// any other name as it is.
std::string krUsualCharset(std::string_view name);

/// Whether this is one of the charsets of languages in Latin letters that the guess can name.
bool krIsWesternCharset(std::string_view charset) noexcept;

/// A guess and the text read by it.
struct KRDetectedText {
  std::string charset;
  KRConvertedText text;
};

/// Guesses the charset of text that is not UTF-8: the first at least half sure whose reading makes hardly any mistake;
/// a little less for an alphabet of its own in which whole words are written. Nothing when there is none.
std::optional<KRDetectedText> krDetectCharset(std::string_view bytes);

/// How many characters beyond ASCII stand where writers of western languages do not put them, such as a capital behind
/// a small letter or a symbol inside a word: the fewer, the likelier is the charset by which the text was read.
size_t krMisplacedCharacters(std::string_view utf8) noexcept;
