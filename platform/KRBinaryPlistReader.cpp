#include "platform/KRBinaryPlistReader.h"

namespace {

using Kind = KRBinaryPlistKind;

void appendUtf8(std::string& text, char32_t point) {
  const auto put = [&](char32_t byte) { text += static_cast<char>(byte); };
  if (point < 0x80) {
    put(point);
  } else if (point < 0x800) {
    put(0xC0 | (point >> 6U));
    put(0x80 | (point & 0x3FU));
  } else if (point < 0x10000) {
    put(0xE0 | (point >> 12U));
    put(0x80 | ((point >> 6U) & 0x3FU));
    put(0x80 | (point & 0x3FU));
  } else {
    put(0xF0 | (point >> 18U));
    put(0x80 | ((point >> 12U) & 0x3FU));
    put(0x80 | ((point >> 6U) & 0x3FU));
    put(0x80 | (point & 0x3FU));
  }
}

constexpr bool isHighSurrogate(char32_t unit) {
  return (unit & 0xFC00U) == 0xD800;
}
constexpr bool isLowSurrogate(char32_t unit) {
  return (unit & 0xFC00U) == 0xDC00;
}

bool isAscii(std::string_view text) {
  unsigned char seen = 0;
  for (const char c : text) seen |= static_cast<unsigned char>(c);
  return seen < 0x80;
}

}  // namespace

std::optional<KRBinaryPlist> KRBinaryPlistReader::read() {
  const std::optional<KRBinaryPlistSource> source = KRBinaryPlistSource::open(bytes_);
  if (!source) return std::nullopt;
  list_.source_ = *source;
  if (!readValues() || !checkCycles()) return std::nullopt;
  list_.root_ = static_cast<Node>(source->root());
  return std::move(list_);
}

bool KRBinaryPlistReader::readValues() {
  uint64_t unread = source().room();
  const auto count = static_cast<Node>(source().count());
  for (Node node = 0; node < count; ++node) {
    const auto [value, size] = source().find(node);
    if (size == 0 || size > unread || !isGood(value)) return false;
    unread -= size;
    if (value.home == Value::Wide) keepWide(node, value);
  }
  return true;
}

bool KRBinaryPlistReader::isGood(const Value& value) const {
  if (value.is(Kind::Text)) {
    return value.home == Value::Wide || isAscii(bytes_.substr(value.bits, static_cast<size_t>(value.size)));
  }
  return source().links(value).areBelow(source().count()) && hasTextKeys(value);
}

bool KRBinaryPlistReader::hasTextKeys(const Value& value) const {
  if (!value.is(Kind::Dictionary)) return true;
  const KRBinaryPlistLinks links = source().links(value);
  for (size_t i = 0; i < value.size; ++i) {
    if (!source().find(links[i]).value.is(Kind::Text)) return false;
  }
  return true;
}

void KRBinaryPlistReader::keepWide(Node node, const Value& text) {
  const auto unit = [&](uint64_t i) {
    return static_cast<char32_t>(krBigEndian(bytes_.data() + text.bits + i * 2, 2));
  };
  const size_t place = list_.own_.size();
  const uint64_t count = text.size;
  for (uint64_t i = 0; i < count; ++i) {
    char32_t point = unit(i);
    if (isHighSurrogate(point) && i + 1 < count && isLowSurrogate(unit(i + 1))) {
      point = 0x10000 + ((point & 0x3FFU) << 10U) + (unit(++i) & 0x3FFU);
    } else if (isHighSurrogate(point) || isLowSurrogate(point)) {
      point = 0xFFFD;
    }
    appendUtf8(list_.own_, point);
  }
  list_.wide_.push_back({node, place, list_.own_.size() - place});
}

bool KRBinaryPlistReader::checkCycles() const {
  // Containers are taken away once all that they hold is taken away; those on a cycle are never. For that, every
  // container counts the containers that hold it: whoever is held by nobody is taken first, and lets go of its own.
  const auto links = [&](size_t node) { return source().links(source().find(node).value); };
  const size_t count = source().count();
  std::vector<uint32_t> holders(count, 0);
  for (size_t i = 0; i < count; ++i) {
    for (const Node target : links(i)) ++holders[target];
  }
  std::vector<Node> free;
  for (size_t i = 0; i < count; ++i) {
    if (holders[i] == 0) free.push_back(static_cast<Node>(i));
  }
  size_t taken = 0;
  while (!free.empty()) {
    const Node node = free.back();
    free.pop_back();
    ++taken;
    for (const Node target : links(node)) {
      if (--holders[target] == 0) free.push_back(target);
    }
  }
  return taken == count;
}
