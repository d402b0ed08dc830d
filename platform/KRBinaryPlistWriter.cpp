#include "platform/KRBinaryPlistWriter.h"

#include <bit>

#include "platform/KRHash.h"

namespace {

using Kind = KRBinaryPlist::Kind;

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
  KRBinaryPlistBytes bytes(KRBinaryPlistBytes::referenceSizeFor(order_.size()));
  // Added in the order of their numbers, the values have the same there.
  for (const Node node : order_) writeValue(list_.values_[node], bytes);
  return std::string(bytes.finish(0).view());
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

void KRBinaryPlistWriter::writeValue(const Value& value, KRBinaryPlistBytes& bytes) {
  const uint64_t bits = value.bits;
  switch (static_cast<Kind>(value.kind)) {
    case Kind::Null:
      bytes.addNull();
      break;
    case Kind::Truth:
      bytes.addTruth(bits != 0);
      break;
    case Kind::Integer:
      bytes.addInteger(static_cast<int64_t>(bits));
      break;
    case Kind::Unsigned:
      bytes.addUnsigned(bits);
      break;
    case Kind::Real:
      bytes.addReal(std::bit_cast<double>(bits));
      break;
    case Kind::Instant:
      bytes.addInstant(std::bit_cast<double>(bits));
      break;
    case Kind::Data:
      bytes.addData(list_.bytesOf(value));
      break;
    case Kind::Text:
      bytes.addText(list_.bytesOf(value));
      break;
    case Kind::Uid:
      bytes.addUid(bits);
      break;
    case Kind::Array:
      bytes.addArray(numbersOf(value, static_cast<size_t>(value.size)));
      break;
    case Kind::Dictionary: {
      const auto pairs = static_cast<size_t>(value.size);
      const std::span<const Node> numbers = numbersOf(value, pairs * 2);
      bytes.addDictionary(numbers.first(pairs), numbers.last(pairs));
      break;
    }
  }
}

std::span<const KRBinaryPlist::Node> KRBinaryPlistWriter::numbersOf(const Value& value, size_t count) {
  linked_.clear();
  for (size_t i = 0; i < count; ++i) linked_.push_back(numbers_[list_.links_[value.bits + i]]);
  return linked_;
}
