#include "platform/KRBinaryPlistReader.h"

#include <algorithm>
#include <bit>

namespace {

using Kind = KRBinaryPlist::Kind;
using Node = KRBinaryPlist::Node;

constexpr std::string_view kMagic = "bplist00";
constexpr uint64_t kTrailerSize = 32;

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

}  // namespace

std::optional<KRBinaryPlist> KRBinaryPlistReader::read() {
  if (!readTrailer()) return std::nullopt;
  list_.source_ = bytes_;
  list_.values_.reserve(static_cast<size_t>(objectCount_));
  unread_ = tableOffset_ - kMagic.size();
  for (uint64_t i = 0; i < objectCount_; ++i) {
    if (!readObject(number(tableOffset_ + i * offsetSize_, offsetSize_))) return std::nullopt;
  }
  if (!checkKeys() || !checkCycles()) return std::nullopt;
  list_.root_ = static_cast<Node>(root_);
  return std::move(list_);
}

bool KRBinaryPlistReader::readTrailer() {
  if (bytes_.size() < kMagic.size() + kTrailerSize || !bytes_.starts_with(kMagic)) return false;
  const uint64_t trailer = bytes_.size() - kTrailerSize;
  offsetSize_ = static_cast<unsigned char>(bytes_[trailer + 6]);
  referenceSize_ = static_cast<unsigned char>(bytes_[trailer + 7]);
  objectCount_ = number(trailer + 8, 8);
  root_ = number(trailer + 16, 8);
  tableOffset_ = number(trailer + 24, 8);
  if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8) return false;
  if (tableOffset_ < kMagic.size() || tableOffset_ > trailer) return false;
  if (objectCount_ >= KRBinaryPlist::kNone || root_ >= objectCount_) return false;
  // Every object has at least one byte.
  return objectCount_ <= (trailer - tableOffset_) / offsetSize_ && objectCount_ <= tableOffset_ - kMagic.size();
}

bool KRBinaryPlistReader::fits(uint64_t offset, uint64_t count, uint64_t size) const {
  return offset <= tableOffset_ && count <= (tableOffset_ - offset) / size;
}

uint64_t KRBinaryPlistReader::number(uint64_t offset, unsigned size) const {
  uint64_t value = 0;
  for (unsigned i = 0; i < size; ++i) value = (value << 8U) | static_cast<unsigned char>(bytes_[offset + i]);
  return value;
}

bool KRBinaryPlistReader::readObject(uint64_t offset) {
  if (offset < kMagic.size() || !fits(offset, 1, 1) || unread_ == 0) return false;
  --unread_;
  const auto marker = static_cast<unsigned char>(bytes_[offset]);
  const unsigned info = marker & 0x0FU;
  ++offset;
  uint64_t count = 0;
  switch (marker >> 4U) {
    case 0x0:
      return readSimple(info);
    case 0x1:
      return readInteger(offset, info);
    case 0x2:
    case 0x3:
      return (marker >> 4U == 0x2 || info == 3) && readReal(offset, marker);
    case 0x4:
      if (!readCount(offset, info, count) || !fits(offset, count, 1) || count > unread_) return false;
      unread_ -= count;
      list_.add(Kind::Data, offset, count);
      return true;
    case 0x5:
      return readCount(offset, info, count) && readAscii(offset, count);
    case 0x6:
      return readCount(offset, info, count) && readUtf16(offset, count);
    case 0x8:
      return readUid(offset, info);
    case 0xA:
      return readCount(offset, info, count) && readLinks(Kind::Array, offset, count, 1);
    case 0xD:
      return readCount(offset, info, count) && readLinks(Kind::Dictionary, offset, count, 2);
    default:
      // Sets, and what no program writes.
      return false;
  }
}

bool KRBinaryPlistReader::readSimple(unsigned info) {
  switch (info) {
    case 0x0:
      list_.addNull();
      return true;
    case 0x8:
    case 0x9:
      list_.addTruth(info == 0x9);
      return true;
    default:
      return false;
  }
}

bool KRBinaryPlistReader::readInteger(uint64_t offset, unsigned info) {
  if (info > 4) return false;
  const unsigned size = 1U << info;
  if (!fits(offset, 1, size) || size > unread_) return false;
  unread_ -= size;
  if (size < 16) {
    // Numbers of fewer than eight bytes have no sign.
    list_.addInteger(static_cast<int64_t>(number(offset, size)));
    return true;
  }
  const uint64_t high = number(offset, 8);
  const uint64_t low = number(offset + 8, 8);
  if (high == 0) {
    list_.addUnsigned(low);
    return true;
  }
  const auto value = static_cast<int64_t>(low);
  if (high != UINT64_MAX || value >= 0) return false;
  list_.addInteger(value);
  return true;
}

bool KRBinaryPlistReader::readReal(uint64_t offset, unsigned marker) {
  const unsigned info = marker & 0x0FU;
  if (info != 2 && info != 3) return false;
  const unsigned size = 1U << info;
  if (!fits(offset, 1, size) || size > unread_) return false;
  unread_ -= size;
  const uint64_t bits = number(offset, size);
  const double value =
      size == 4 ? static_cast<double>(std::bit_cast<float>(static_cast<uint32_t>(bits))) : std::bit_cast<double>(bits);
  if (marker >> 4U == 0x3) {
    list_.addInstant(value);
  } else {
    list_.addReal(value);
  }
  return true;
}

bool KRBinaryPlistReader::readUid(uint64_t offset, unsigned info) {
  const unsigned size = info + 1;
  if (size > 8 || !fits(offset, 1, size) || size > unread_) return false;
  unread_ -= size;
  list_.addUid(number(offset, size));
  return true;
}

bool KRBinaryPlistReader::readAscii(uint64_t offset, uint64_t count) {
  if (!fits(offset, count, 1) || count > unread_) return false;
  unread_ -= count;
  const std::string_view text = bytes_.substr(offset, count);
  unsigned char seen = 0;
  for (const char c : text) seen |= static_cast<unsigned char>(c);
  if (seen >= 0x80) return false;
  list_.add(Kind::Text, offset, count);
  return true;
}

bool KRBinaryPlistReader::readUtf16(uint64_t offset, uint64_t count) {
  if (!fits(offset, count, 2) || count * 2 > unread_) return false;
  unread_ -= count * 2;
  const auto unit = [&](uint64_t i) { return static_cast<char32_t>(number(offset + i * 2, 2)); };
  const size_t place = list_.own_.size();
  for (uint64_t i = 0; i < count; ++i) {
    char32_t point = unit(i);
    if (isHighSurrogate(point) && i + 1 < count && isLowSurrogate(unit(i + 1))) {
      point = 0x10000 + ((point & 0x3FFU) << 10U) + (unit(++i) & 0x3FFU);
    } else if (isHighSurrogate(point) || isLowSurrogate(point)) {
      point = 0xFFFD;
    }
    appendUtf8(list_.own_, point);
  }
  list_.add(Kind::Text, place, list_.own_.size() - place, true);
  return true;
}

bool KRBinaryPlistReader::readLinks(Kind kind, uint64_t offset, uint64_t count, uint64_t linksOfOne) {
  if (!fits(offset, count, linksOfOne * referenceSize_)) return false;
  const uint64_t links = count * linksOfOne;
  if (links * referenceSize_ > unread_) return false;
  unread_ -= links * referenceSize_;
  const size_t place = list_.links_.size();
  for (uint64_t i = 0; i < links; ++i) {
    const uint64_t target = number(offset + i * referenceSize_, referenceSize_);
    if (target >= objectCount_) return false;
    list_.links_.push_back(static_cast<Node>(target));
  }
  list_.add(kind, place, count);
  return true;
}

bool KRBinaryPlistReader::readCount(uint64_t& offset, unsigned info, uint64_t& count) {
  if (info != 0xF) {
    count = info;
    return true;
  }
  // A longer count is an integer of its own, right behind the marker.
  if (!fits(offset, 1, 1)) return false;
  const auto marker = static_cast<unsigned char>(bytes_[offset]);
  const unsigned size = 1U << (marker & 0x0FU);
  if (marker >> 4U != 0x1 || size > 8 || !fits(offset + 1, 1, size) || size + 1 > unread_) return false;
  unread_ -= size + 1;
  count = number(offset + 1, size);
  offset += size + 1;
  return true;
}

bool KRBinaryPlistReader::checkKeys() const {
  for (size_t i = 0; i < list_.values_.size(); ++i) {
    const auto keys = list_.keys(static_cast<Node>(i));
    if (!std::all_of(keys.begin(), keys.end(), [&](Node key) { return list_.kind(key) == Kind::Text; })) return false;
  }
  return true;
}

bool KRBinaryPlistReader::checkCycles() const {
  // Containers are taken away once all that they hold is taken away; those on a cycle are never. For that, every
  // container counts the containers that hold it: whoever is held by nobody is taken first, and lets go of its own.
  const auto links = [&](size_t node) {
    const KRBinaryPlist::Value& value = list_.values_[node];
    const bool isArray = value.kind == static_cast<uint8_t>(Kind::Array);
    const bool isDictionary = value.kind == static_cast<uint8_t>(Kind::Dictionary);
    const size_t count = isArray ? value.size : isDictionary ? value.size * 2 : 0;
    return std::span<const Node>(list_.links_.data() + (count == 0 ? 0 : value.bits), count);
  };
  const size_t count = list_.values_.size();
  std::vector<uint32_t> holders(count, 0);
  for (const Node target : list_.links_) ++holders[target];
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
