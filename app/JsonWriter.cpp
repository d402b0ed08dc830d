#include "app/JsonWriter.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace {

constexpr std::string_view kIndent = "  ";

bool needsEscape(char32_t point) {
  return point < 0x20 || point == '"' || point == '\\' || (point >= 0x7F && point < 0xA0) || point == 0x2028 ||
         point == 0x2029;
}

}  // namespace

void JsonWriter::key(std::string_view name) {
  separate();
  quoted(name);
  out_.write(": ");
  hasKey_ = true;
}

void JsonWriter::text(std::string_view text) {
  separate();
  quoted(text);
}

void JsonWriter::whole(int64_t value) {
  separate();
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  out_.write(std::string_view(digits, static_cast<size_t>(end - digits)));
}

void JsonWriter::number(double value) {
  if (!std::isfinite(value)) {
    null();
    return;
  }
  separate();
  char digits[32];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  out_.write(std::string_view(digits, static_cast<size_t>(end - digits)));
}

void JsonWriter::truth(bool value) {
  separate();
  out_.write(value ? "true" : "false");
}

void JsonWriter::null() {
  separate();
  out_.write("null");
}

void JsonWriter::begin(char bracket, Layout layout) {
  separate();
  out_.write(bracket);
  const bool oneLine = layout_ == Layout::OneLine || layout == Layout::OneLine ||
                       (!levels_.empty() && levels_.back().layout == Layout::OneLine);
  levels_.push_back({oneLine ? Layout::OneLine : Layout::Lines, true});
}

void JsonWriter::end(char bracket) {
  const Level level = levels_.back();
  levels_.pop_back();
  if (level.layout == Layout::Lines && !level.isEmpty) newLine();
  out_.write(bracket);
}

void JsonWriter::separate() {
  if (hasKey_) {
    hasKey_ = false;
    return;
  }
  if (levels_.empty()) return;
  Level& level = levels_.back();
  if (!level.isEmpty) out_.write(level.layout == Layout::Lines ? "," : ", ");
  level.isEmpty = false;
  if (level.layout == Layout::Lines) newLine();
}

void JsonWriter::newLine() {
  out_.write('\n');
  for (size_t i = 0; i < levels_.size(); ++i) out_.write(kIndent);
}

void JsonWriter::quoted(std::string_view text) {
  out_.write('"');
  size_t plain = 0;
  for (size_t position = 0; position < text.size();) {
    const size_t start = position;
    const char32_t point = krNextCodePoint(text, position);
    if (!needsEscape(point)) continue;
    out_.write(text.substr(plain, start - plain));
    plain = position;
    if (point == '"' || point == '\\') {
      out_.write('\\');
      out_.write(static_cast<char>(point));
    } else if (point == '\n') {
      out_.write("\\n");
    } else {
      char form[8];
      std::snprintf(form, sizeof form, "\\u%04x", static_cast<unsigned>(point));
      out_.write(form);
    }
  }
  out_.write(text.substr(plain));
  out_.write('"');
}
