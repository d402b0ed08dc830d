#include "platform/KRBinaryPlistWriter.h"

#include <bit>

#include "platform/KRHash.h"

using Kind = KRBinaryPlistKind;

KRBinaryPlistWriter::KRBinaryPlistWriter(const KRBinaryPlist& list)
    : list_(list), numbers_(list.count(), KRBinaryPlist::kNone) {}

KRBuffer KRBinaryPlistWriter::write() {
  if (list_.root_ >= list_.count()) return {};
  numberValues();
  KRBinaryPlistBytes bytes(KRBinaryPlistBytes::referenceSizeFor(order_.size()));
  // Added in the order of their numbers, the values have the same there.
  for (const Node node : order_) writeValue(list_.value(node), bytes);
  return bytes.finish(0);
}

void KRBinaryPlistWriter::numberValues() {
  numbers_[list_.root_] = 0;
  order_.push_back(list_.root_);
  for (size_t i = 0; i < order_.size(); ++i) numberLinks(list_.value(order_[i]));
}

void KRBinaryPlistWriter::numberLinks(const Value& value) {
  for (const Node node : list_.linksOf(value)) {
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
  const Value value = list_.value(node);
  if (value.isContainer()) return node;
  if (value.is(Kind::Uid) && value.bits < list_.count()) {
    return representativeOfUid(node, value.bits);
  }
  const uint64_t valueHash = hash(value);
  const Node known = scalars_.find(valueHash, [&](Node other) { return isSame(list_.value(other), value); });
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
  if (!value.hasBytes()) return krHashMix(value.kind, value.bits);
  const std::string_view bytes = list_.bytesOf(value);
  return krHashMix(value.kind, krHashBytes(bytes.data(), bytes.size()));
}

bool KRBinaryPlistWriter::isSame(const Value& a, const Value& b) const {
  if (a.kind != b.kind) return false;
  return a.hasBytes() ? list_.bytesOf(a) == list_.bytesOf(b) : a.bits == b.bits;
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
      bytes.addArray(numbersOf(value));
      break;
    case Kind::Dictionary: {
      const auto pairs = static_cast<size_t>(value.size);
      const std::span<const Node> numbers = numbersOf(value);
      bytes.addDictionary(numbers.first(pairs), numbers.last(pairs));
      break;
    }
  }
}

std::span<const KRBinaryPlist::Node> KRBinaryPlistWriter::numbersOf(const Value& container) {
  linked_.clear();
  for (const Node node : list_.linksOf(container)) linked_.push_back(numbers_[node]);
  return linked_;
}
