#include "platform/KRStringTable.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace {

bool isWordByte(char c) noexcept {
  const bool isAlphanumeric = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
  return isAlphanumeric || std::string_view("_.-$/:").find(c) != std::string_view::npos;
}

int digitValue(char c) noexcept {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return 99;
}

void appendCodePoint(std::string& text, uint32_t point) {
  if (point >= 0xD800 && point < 0xE000) point = 0xFFFD;
  const auto byte = [&](uint32_t bits) { text += static_cast<char>(bits); };
  if (point < 0x80) {
    byte(point);
  } else if (point < 0x800) {
    byte(0xC0U | (point >> 6U));
    byte(0x80U | (point & 0x3FU));
  } else if (point < 0x10000) {
    byte(0xE0U | (point >> 12U));
    byte(0x80U | ((point >> 6U) & 0x3FU));
    byte(0x80U | (point & 0x3FU));
  } else {
    byte(0xF0U | (point >> 18U));
    byte(0x80U | ((point >> 12U) & 0x3FU));
    byte(0x80U | ((point >> 6U) & 0x3FU));
    byte(0x80U | (point & 0x3FU));
  }
}

class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  bool atEnd() const noexcept { return place_ >= text_.size(); }
  size_t place() const noexcept { return place_; }

  /// Passes over white space and comments; false when a comment has no end.
  bool skipBlanks() {
    while (!atEnd()) {
      const char c = text_[place_];
      if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
        ++place_;
      } else if (starts("//")) {
        place_ = std::min(text_.find_first_of("\r\n", place_), text_.size());
      } else if (starts("/*")) {
        const size_t end = text_.find("*/", place_ + 2);
        place_ = end == std::string_view::npos ? text_.size() : end + 2;
        if (end == std::string_view::npos) return false;
      } else {
        return true;
      }
    }
    return true;
  }

  bool take(char c) {
    if (atEnd() || text_[place_] != c) return false;
    ++place_;
    return true;
  }

  std::optional<std::string> takeText() {
    if (atEnd()) return std::nullopt;
    return text_[place_] == '"' ? takeQuoted() : takeWord();
  }

  /// To behind the next semicolon or to the line's end, and at least one byte on.
  void skipMistake() {
    const size_t end = text_.find_first_of(";\n", place_);
    place_ = end == std::string_view::npos ? text_.size() : end + 1;
  }

 private:
  bool starts(std::string_view with) const noexcept { return text_.substr(place_).starts_with(with); }

  std::optional<std::string> takeWord() {
    const size_t begin = place_;
    while (!atEnd() && isWordByte(text_[place_]) && !starts("//") && !starts("/*")) ++place_;
    if (place_ == begin) return std::nullopt;
    return std::string(text_.substr(begin, place_ - begin));
  }

  /// Nothing when the closing quote is missing; then the reader stands at the end.
  std::optional<std::string> takeQuoted() {
    std::string text;
    for (++place_; !atEnd();) {
      const char c = text_[place_++];
      if (c == '"') return text;
      if (c != '\\') {
        text += c;
      } else if (!atEnd()) {
        takeEscape(text);
      }
    }
    return std::nullopt;
  }

  void takeEscape(std::string& text) {
    const char c = text_[place_];
    if (c >= '0' && c <= '7') {
      appendCodePoint(text, digits(8, 3).value_or(0) & 0xFFU);
      return;
    }
    ++place_;
    if (c == 'U' || c == 'u') {
      takeUnicode(text, c);
      return;
    }
    constexpr std::string_view kLetters = "abfnrtv";
    constexpr std::string_view kMeanings = "\a\b\f\n\r\t\v";
    const size_t letter = kLetters.find(c);
    text += letter == std::string_view::npos ? c : kMeanings[letter];
  }

  void takeUnicode(std::string& text, char letter) {
    const std::optional<uint32_t> first = digits(16, 4);
    if (!first) {
      text += letter;
      return;
    }
    uint32_t point = *first;
    if (point >= 0xD800 && point < 0xDC00 && (starts("\\U") || starts("\\u"))) {
      const size_t back = place_;
      place_ += 2;
      const uint32_t second = digits(16, 4).value_or(0);
      if (second >= 0xDC00 && second < 0xE000) {
        point = 0x10000 + ((point - 0xD800) << 10U) + (second - 0xDC00);
      } else {
        place_ = back;
      }
    }
    appendCodePoint(text, point);
  }

  std::optional<uint32_t> digits(int base, size_t most) {
    uint32_t value = 0;
    size_t count = 0;
    for (; count < most && !atEnd() && digitValue(text_[place_]) < base; ++count, ++place_)
      value = value * static_cast<uint32_t>(base) + static_cast<uint32_t>(digitValue(text_[place_]));
    return count == 0 ? std::nullopt : std::optional<uint32_t>(value);
  }

  std::string_view text_;
  size_t place_ = 0;
};

}  // namespace

KRStringTable KRStringTable::parse(std::string_view text) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  if (text.starts_with(kMark)) text.remove_prefix(kMark.size());
  KRStringTable table;
  Reader reader(text);
  while (true) {
    if (!reader.skipBlanks()) ++table.mistakes_;
    if (reader.atEnd()) return table;
    const std::optional<std::string> key = reader.takeText();
    std::optional<std::string> value = key;
    bool isGood = key.has_value() && reader.skipBlanks();
    if (isGood && reader.take('=')) {
      isGood = reader.skipBlanks();
      value = reader.takeText();
      isGood = isGood && value.has_value() && reader.skipBlanks();
    }
    if (!isGood || !reader.take(';')) {
      ++table.mistakes_;
      reader.skipMistake();
      continue;
    }
    KRString name(*key);
    const bool isNew = table.entries_.insert_or_assign(name, KRString(*value)).second;
    if (isNew) {
      table.keys_.push_back(std::move(name));
    } else {
      ++table.mistakes_;
    }
  }
}

KRString KRStringTable::find(KRText key) const {
  const auto found = entries_.find(key);
  return found == entries_.end() ? KRString() : found->second;
}
