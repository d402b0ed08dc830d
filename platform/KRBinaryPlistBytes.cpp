#include "platform/KRBinaryPlistBytes.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>

#include "platform/KRBinaryPlistValue.h"

namespace {

/// A marker, and the integer that holds a count behind it.
constexpr size_t kMostOfMarker = 1 + 1 + 8;

/// How many bytes the format gives to a number: 1, 2, 4 or 8.
unsigned sizeOf(uint64_t value) {
  return value <= 0xFF ? 1 : value <= 0xFFFF ? 2 : value <= 0xFFFFFFFFU ? 4 : 8;
}

/// The power of two that a size is, as markers hold it.
unsigned powerOf(unsigned size) {
  return size == 1 ? 0 : size == 2 ? 1 : size == 4 ? 2 : 3;
}

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

template <class Number>
char* storeTurned(char* to, Number turned) noexcept {
  std::memcpy(to, &turned, sizeof turned);
  return to + sizeof turned;
}

/// Big-endian, in 1, 2, 4 or 8 bytes; answers where the next goes.
char* store(char* to, uint64_t value, unsigned size) noexcept {
  static_assert(std::endian::native == std::endian::little, "the bytes are turned round below");
  switch (size) {
    case 1:
      return storeTurned(to, static_cast<uint8_t>(value));
    case 2:
      return storeTurned(to, __builtin_bswap16(static_cast<uint16_t>(value)));
    case 4:
      return storeTurned(to, __builtin_bswap32(static_cast<uint32_t>(value)));
    default:
      return storeTurned(to, __builtin_bswap64(value));
  }
}

}  // namespace

KRBinaryPlistBytes::KRBinaryPlistBytes(unsigned referenceSize) : referenceSize_(referenceSize) {
  reserve(kKRBinaryPlistMagic.size());
  putBytes(kKRBinaryPlistMagic);
}

unsigned KRBinaryPlistBytes::referenceSizeFor(size_t count) noexcept {
  return sizeOf(count == 0 ? 0 : count - 1);
}

KRBinaryPlistBytes::Number KRBinaryPlistBytes::addNull() {
  return addMarker(0x00);
}

KRBinaryPlistBytes::Number KRBinaryPlistBytes::addTruth(bool value) {
  return addMarker(value ? 0x09 : 0x08);
}

KRBinaryPlistBytes::Number KRBinaryPlistBytes::addInteger(int64_t value) {
  const Number number = begin(kMostOfMarker);
  putInteger(value);
  return number;
}

KRBinaryPlistBytes::Number KRBinaryPlistBytes::addUnsigned(uint64_t value) {
  if (value <= INT64_MAX) return addInteger(static_cast<int64_t>(value));
  // Eight bytes would read as negative.
  const Number number = begin(1 + 8 + 8);
  put(0x14, 1);
  put(0, 8);
  put(value, 8);
  return number;
}

KRBinaryPlistBytes::Number KRBinaryPlistBytes::addReal(double value) {
  return addNumber(0x23, std::bit_cast<uint64_t>(value), 8);
}

KRBinaryPlistBytes::Number KRBinaryPlistBytes::addInstant(double secondsSince2001) {
  return addNumber(0x33, std::bit_cast<uint64_t>(secondsSince2001), 8);
}

KRBinaryPlistBytes::Number KRBinaryPlistBytes::addUid(uint64_t value) {
  const unsigned size = sizeOf(value);
  return addNumber(0x80U | (size - 1), value, size);
}

KRBinaryPlistBytes::Number KRBinaryPlistBytes::addText(KRText text) {
  if (!isAscii(text.view())) return addWideText(text);
  const Number number = begin(kMostOfMarker + text.size());
  putMarker(0x5, text.size());
  putBytes(text.view());
  return number;
}

KRBinaryPlistBytes::Number KRBinaryPlistBytes::addWideText(KRText text) {
  const size_t length = text.length();
  const Number number = begin(kMostOfMarker + length * 2);
  putMarker(0x6, length);
  char* to = end();
  text.allUnits([&](char16_t unit) {
    to = store(to, unit, 2);
    return true;
  });
  setEnd(to);
  return number;
}

KRBinaryPlistBytes::Number KRBinaryPlistBytes::addData(std::string_view bytes) {
  const Number number = begin(kMostOfMarker + bytes.size());
  putMarker(0x4, bytes.size());
  putBytes(bytes);
  return number;
}

KRBinaryPlistBytes::Number KRBinaryPlistBytes::addArray(std::span<const Number> elements) {
  const Number number = begin(kMostOfMarker + elements.size() * referenceSize_);
  putMarker(0xA, elements.size());
  putReferences(elements);
  return number;
}

KRBinaryPlistBytes::Number KRBinaryPlistBytes::addDictionary(std::span<const Number> keys,
                                                             std::span<const Number> values) {
  const Number number = begin(kMostOfMarker + (keys.size() + values.size()) * referenceSize_);
  putMarker(0xD, keys.size());
  putReferences(keys);
  putReferences(values);
  return number;
}

KRBinaryPlistBytes::Number KRBinaryPlistBytes::addMarker(unsigned marker) {
  const Number number = begin(1);
  put(marker, 1);
  return number;
}

KRBinaryPlistBytes::Number KRBinaryPlistBytes::addNumber(unsigned marker, uint64_t value, unsigned size) {
  const Number number = begin(1 + size);
  put(marker, 1);
  put(value, size);
  return number;
}

void KRBinaryPlistBytes::removeLast() noexcept {
  const size_t last = count() - 1;
  bytes_.setSize(offset(last));
  while (!wraps_.empty() && wraps_.back() == last) wraps_.pop_back();
  offsets_.removeLast();
}

KRBuffer KRBinaryPlistBytes::finish(Number root) {
  const uint64_t tableOffset = bytes_.size();
  const unsigned offsetSize = sizeOf(tableOffset);
  const size_t size = bytes_.size() + count() * offsetSize + kKRBinaryPlistTrailerSize;
  if (!bytes_.reserve(size)) throw std::bad_alloc();
  putTable(offsetSize);
  // Six bytes without meaning.
  put(0, 2);
  put(0, 4);
  put(offsetSize, 1);
  put(referenceSize_, 1);
  put(count(), 8);
  put(root, 8);
  put(tableOffset, 8);
  return std::move(bytes_);
}

void KRBinaryPlistBytes::putTable(unsigned offsetSize) noexcept {
  char* to = end();
  uint64_t high = 0;
  size_t wrap = 0;
  for (size_t number = 0; number < count(); ++number) {
    for (; wrap < wraps_.size() && wraps_[wrap] == number; ++wrap) high += uint64_t{1} << 32U;
    to = store(to, high | offsets_[number], offsetSize);
  }
  setEnd(to);
}

/// Begins a value of at most so many bytes at the end.
KRBinaryPlistBytes::Number KRBinaryPlistBytes::begin(size_t most) {
  const auto number = static_cast<Number>(count());
  const size_t limit = referenceSize_ == 4 ? kNone : size_t{1} << (8 * referenceSize_);
  if (count() >= limit) throw std::bad_alloc();
  reserve(most);
  // Before the offset, which is what makes the value count.
  for (size_t wraps = wraps_.size(); wraps < bytes_.size() >> 32U; ++wraps) wraps_.push_back(number);
  offsets_.append(static_cast<uint32_t>(bytes_.size()));
  return number;
}

uint64_t KRBinaryPlistBytes::offset(size_t number) const noexcept {
  const auto high = static_cast<uint64_t>(std::upper_bound(wraps_.begin(), wraps_.end(), number) - wraps_.begin());
  return (high << 32U) | offsets_[number];
}

void KRBinaryPlistBytes::reserve(size_t more) {
  if (!bytes_.grow(more)) throw std::bad_alloc();
}

void KRBinaryPlistBytes::put(uint64_t value, unsigned size) noexcept {
  setEnd(store(end(), value, size));
}

void KRBinaryPlistBytes::putInteger(int64_t value) noexcept {
  const auto bits = static_cast<uint64_t>(value);
  const unsigned size = value < 0 ? 8 : sizeOf(bits);
  put(0x10U | powerOf(size), 1);
  put(bits, size);
}

void KRBinaryPlistBytes::putMarker(unsigned type, uint64_t count) noexcept {
  if (count < 0xF) {
    put((type << 4U) | count, 1);
    return;
  }
  put((type << 4U) | 0xFU, 1);
  putInteger(static_cast<int64_t>(count));
}

void KRBinaryPlistBytes::putBytes(std::string_view bytes) noexcept {
  if (bytes.empty()) return;
  std::memcpy(end(), bytes.data(), bytes.size());
  setEnd(end() + bytes.size());
}

void KRBinaryPlistBytes::putReferences(std::span<const Number> numbers) noexcept {
  char* to = end();
  for (const Number number : numbers) to = store(to, number, referenceSize_);
  setEnd(to);
}
