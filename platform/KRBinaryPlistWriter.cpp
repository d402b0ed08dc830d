#include "platform/KRBinaryPlistWriter.h"

#include <algorithm>

#include "platform/KRHash.h"

namespace {

using Kind = KRBinaryPlist::Kind;

constexpr std::string_view kMagic = "bplist00";

/// How many bytes the format gives to a number: 1, 2, 4 or 8.
unsigned sizeOf(uint64_t value) {
  return value <= 0xFF ? 1 : value <= 0xFFFF ? 2 : value <= 0xFFFFFFFFU ? 4 : 8;
}

/// The power of two that a size is, as markers hold it.
unsigned powerOf(unsigned size) {
  return size == 1 ? 0 : size == 2 ? 1 : size == 4 ? 2 : 3;
}

bool hasBytes(uint64_t kind) {
  return kind == static_cast<uint8_t>(Kind::Data) || kind == static_cast<uint8_t>(Kind::Text);
}

bool isContainer(uint64_t kind) {
  return kind == static_cast<uint8_t>(Kind::Array) || kind == static_cast<uint8_t>(Kind::Dictionary);
}

}  // namespace

KRBinaryPlistWriter::KRBinaryPlistWriter(const KRBinaryPlist& list)
    : list_(list), numbers_(list.values_.size(), KRBinaryPlist::kNone) {}

std::string KRBinaryPlistWriter::write() {
  if (list_.root_ >= list_.values_.size()) return {};
  numberValues();
  referenceSize_ = sizeOf(order_.size() - 1);

  bytes_.append(kMagic);
  std::vector<uint64_t> offsets;
  offsets.reserve(order_.size());
  for (const Node node : order_) {
    offsets.push_back(bytes_.size());
    writeValue(list_.values_[node]);
  }
  const uint64_t tableOffset = bytes_.size();
  const unsigned offsetSize = sizeOf(tableOffset);
  for (const uint64_t offset : offsets) writeNumber(offset, offsetSize);
  bytes_.append(6, '\0');
  writeNumber(offsetSize, 1);
  writeNumber(referenceSize_, 1);
  writeNumber(order_.size(), 8);
  writeNumber(0, 8);
  writeNumber(tableOffset, 8);
  return std::move(bytes_);
}

void KRBinaryPlistWriter::numberValues() {
  numbers_[list_.root_] = 0;
  order_.push_back(list_.root_);
  for (size_t i = 0; i < order_.size(); ++i) numberLinks(list_.values_[order_[i]]);
}

void KRBinaryPlistWriter::numberLinks(const Value& value) {
  if (!isContainer(value.kind)) return;
  const size_t count = static_cast<size_t>(value.size) * (value.kind == static_cast<uint8_t>(Kind::Array) ? 1 : 2);
  for (size_t i = 0; i < count; ++i) {
    const Node node = list_.links_[value.bits + i];
    if (numbers_[node] != KRBinaryPlist::kNone) continue;
    const Node first = representative(node);
    if (numbers_[first] == KRBinaryPlist::kNone) {
      numbers_[first] = static_cast<Node>(order_.size());
      order_.push_back(first);
    }
    numbers_[node] = numbers_[first];
  }
}

KRBinaryPlist::Node KRBinaryPlistWriter::representative(Node node) {
  const Value& value = list_.values_[node];
  if (isContainer(value.kind)) return node;
  if (value.kind == static_cast<uint8_t>(Kind::Uid) && value.bits < list_.values_.size()) {
    return representativeOfUid(node, value.bits);
  }
  const uint64_t valueHash = hash(value);
  const Node known = scalars_.find(valueHash, [&](Node other) { return isSame(list_.values_[other], value); });
  if (known != KRHashIndex::kNone) return known;
  scalars_.add(valueHash, node);
  return node;
}

KRBinaryPlist::Node KRBinaryPlistWriter::representativeOfUid(Node node, uint64_t uid) {
  if (uid >= uids_.size()) uids_.resize(static_cast<size_t>(uid) + 1, KRBinaryPlist::kNone);
  Node& first = uids_[static_cast<size_t>(uid)];
  if (first == KRBinaryPlist::kNone) first = node;
  return first;
}

uint64_t KRBinaryPlistWriter::hash(const Value& value) const {
  if (!hasBytes(value.kind)) return krHashMix(value.kind, value.bits);
  const std::string_view bytes = list_.bytesOf(value);
  return krHashMix(value.kind, krHashBytes(bytes.data(), bytes.size()));
}

bool KRBinaryPlistWriter::isSame(const Value& a, const Value& b) const {
  if (a.kind != b.kind) return false;
  return hasBytes(a.kind) ? list_.bytesOf(a) == list_.bytesOf(b) : a.bits == b.bits;
}

void KRBinaryPlistWriter::writeValue(const Value& value) {
  switch (static_cast<Kind>(value.kind)) {
    case Kind::Null:
      writeNumber(0x00, 1);
      break;
    case Kind::Truth:
      writeNumber(value.bits != 0 ? 0x09 : 0x08, 1);
      break;
    case Kind::Integer:
      writeInteger(static_cast<int64_t>(value.bits));
      break;
    case Kind::Unsigned:
      // Eight bytes would read as negative.
      writeNumber(0x14, 1);
      writeNumber(0, 8);
      writeNumber(value.bits, 8);
      break;
    case Kind::Real:
      writeNumber(0x23, 1);
      writeNumber(value.bits, 8);
      break;
    case Kind::Instant:
      writeNumber(0x33, 1);
      writeNumber(value.bits, 8);
      break;
    case Kind::Data:
      writeMarker(0x4, value.size);
      bytes_.append(list_.bytesOf(value));
      break;
    case Kind::Text:
      writeText(list_.bytesOf(value));
      break;
    case Kind::Uid: {
      const unsigned size = sizeOf(value.bits);
      writeNumber(0x80U | (size - 1), 1);
      writeNumber(value.bits, size);
      break;
    }
    case Kind::Array:
      writeMarker(0xA, value.size);
      writeLinks(value, static_cast<size_t>(value.size));
      break;
    case Kind::Dictionary:
      writeMarker(0xD, value.size);
      writeLinks(value, static_cast<size_t>(value.size) * 2);
      break;
  }
}

void KRBinaryPlistWriter::writeText(std::string_view text) {
  const bool isAscii =
      std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  if (isAscii) {
    writeMarker(0x5, text.size());
    bytes_.append(text);
    return;
  }
  writeMarker(0x6, KRText(text).length());
  KRText(text).allUnits([&](char16_t unit) {
    writeNumber(unit, 2);
    return true;
  });
}

void KRBinaryPlistWriter::writeLinks(const Value& value, size_t count) {
  for (size_t i = 0; i < count; ++i) writeNumber(numbers_[list_.links_[value.bits + i]], referenceSize_);
}

void KRBinaryPlistWriter::writeInteger(int64_t value) {
  const auto bits = static_cast<uint64_t>(value);
  const unsigned size = value < 0 ? 8 : sizeOf(bits);
  writeNumber(0x10U | powerOf(size), 1);
  writeNumber(bits, size);
}

void KRBinaryPlistWriter::writeMarker(unsigned type, uint64_t count) {
  if (count < 0xF) {
    writeNumber((type << 4U) | count, 1);
    return;
  }
  writeNumber((type << 4U) | 0xFU, 1);
  writeInteger(static_cast<int64_t>(count));
}

void KRBinaryPlistWriter::writeNumber(uint64_t value, unsigned size) {
  char bytes[8];
  for (unsigned i = 0; i < size; ++i) bytes[i] = static_cast<char>((value >> (8U * (size - 1 - i))) & 0xFFU);
  bytes_.append(bytes, size);
}
