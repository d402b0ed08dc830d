#include "platform/KRBinaryPlist.h"

#include <bit>
#include <cstring>

#include "platform/KRBinaryPlistReader.h"
#include "platform/KRBinaryPlistWriter.h"

std::optional<KRBinaryPlist> KRBinaryPlist::read(std::string_view bytes) {
  return KRBinaryPlistReader(bytes).read();
}

std::string KRBinaryPlist::write() const {
  return KRBinaryPlistWriter(*this).write();
}

const KRBinaryPlist::Value* KRBinaryPlist::valueOf(Node node, Kind kind) const noexcept {
  if (node >= values_.size() || values_[node].kind != static_cast<uint8_t>(kind)) return nullptr;
  return &values_[node];
}

std::string_view KRBinaryPlist::bytesOf(const Value& value) const noexcept {
  const std::string_view all = value.isOwn != 0 ? std::string_view(own_) : source_;
  return {all.data() + value.bits, static_cast<size_t>(value.size)};
}

KRBinaryPlist::Kind KRBinaryPlist::kind(Node node) const noexcept {
  return node < values_.size() ? static_cast<Kind>(values_[node].kind) : Kind::Null;
}

bool KRBinaryPlist::truth(Node node) const noexcept {
  const Value* value = valueOf(node, Kind::Truth);
  return value != nullptr && value->bits != 0;
}

int64_t KRBinaryPlist::integer(Node node) const noexcept {
  const Value* value = valueOf(node, Kind::Integer);
  return value != nullptr ? static_cast<int64_t>(value->bits) : 0;
}

uint64_t KRBinaryPlist::unsignedInteger(Node node) const noexcept {
  if (const Value* value = valueOf(node, Kind::Unsigned)) return value->bits;
  const int64_t number = integer(node);
  return number < 0 ? 0 : static_cast<uint64_t>(number);
}

double KRBinaryPlist::real(Node node) const noexcept {
  const Value* value = valueOf(node, Kind::Real);
  return value != nullptr ? std::bit_cast<double>(uint64_t{value->bits}) : 0;
}

double KRBinaryPlist::instant(Node node) const noexcept {
  const Value* value = valueOf(node, Kind::Instant);
  return value != nullptr ? std::bit_cast<double>(uint64_t{value->bits}) : 0;
}

uint64_t KRBinaryPlist::uid(Node node) const noexcept {
  const Value* value = valueOf(node, Kind::Uid);
  return value != nullptr ? value->bits : 0;
}

KRText KRBinaryPlist::text(Node node) const noexcept {
  const Value* value = valueOf(node, Kind::Text);
  return value != nullptr ? KRText(bytesOf(*value)) : KRText();
}

std::string_view KRBinaryPlist::data(Node node) const noexcept {
  const Value* value = valueOf(node, Kind::Data);
  return value != nullptr ? bytesOf(*value) : std::string_view();
}

std::span<const KRBinaryPlist::Node> KRBinaryPlist::elements(Node node) const noexcept {
  const Value* value = valueOf(node, Kind::Array);
  if (value == nullptr) return {};
  return {links_.data() + value->bits, static_cast<size_t>(value->size)};
}

std::span<const KRBinaryPlist::Node> KRBinaryPlist::keys(Node node) const noexcept {
  const Value* value = valueOf(node, Kind::Dictionary);
  if (value == nullptr) return {};
  return {links_.data() + value->bits, static_cast<size_t>(value->size)};
}

std::span<const KRBinaryPlist::Node> KRBinaryPlist::values(Node node) const noexcept {
  const Value* value = valueOf(node, Kind::Dictionary);
  if (value == nullptr) return {};
  return {links_.data() + value->bits + value->size, static_cast<size_t>(value->size)};
}

KRBinaryPlist::Node KRBinaryPlist::find(Node dictionary, KRText key) const noexcept {
  const std::span<const Node> all = keys(dictionary);
  for (size_t i = 0; i < all.size(); ++i) {
    if (sameText(text(all[i]), key)) return values(dictionary)[i];
  }
  return kNone;
}

KRBinaryPlist::Node KRBinaryPlist::add(Kind kind, uint64_t bits, uint64_t size, bool isOwn) {
  Value value;
  value.bits = bits;
  value.size = size & 0xFFFFFFFFFFFFU;
  value.kind = static_cast<uint8_t>(kind);
  value.isOwn = isOwn ? 1 : 0;
  values_.push_back(value);
  return static_cast<Node>(values_.size() - 1);
}

KRBinaryPlist::Node KRBinaryPlist::addNull() {
  return add(Kind::Null, 0);
}

KRBinaryPlist::Node KRBinaryPlist::addTruth(bool value) {
  return add(Kind::Truth, value ? 1 : 0);
}

KRBinaryPlist::Node KRBinaryPlist::addInteger(int64_t value) {
  return add(Kind::Integer, static_cast<uint64_t>(value));
}

KRBinaryPlist::Node KRBinaryPlist::addUnsigned(uint64_t value) {
  return add(value > INT64_MAX ? Kind::Unsigned : Kind::Integer, value);
}

KRBinaryPlist::Node KRBinaryPlist::addReal(double value) {
  return add(Kind::Real, std::bit_cast<uint64_t>(value));
}

KRBinaryPlist::Node KRBinaryPlist::addInstant(double secondsSince2001) {
  return add(Kind::Instant, std::bit_cast<uint64_t>(secondsSince2001));
}

KRBinaryPlist::Node KRBinaryPlist::addUid(uint64_t value) {
  return add(Kind::Uid, value);
}

KRBinaryPlist::Node KRBinaryPlist::addText(KRText text) {
  const size_t place = own_.size();
  own_.append(text.view());
  return add(Kind::Text, place, text.size(), true);
}

KRBinaryPlist::Node KRBinaryPlist::addData(std::string_view bytes) {
  const size_t place = own_.size();
  own_.append(bytes);
  return add(Kind::Data, place, bytes.size(), true);
}

KRBinaryPlist::Node KRBinaryPlist::addArray(std::span<const Node> elements) {
  const size_t place = links_.size();
  links_.insert(links_.end(), elements.begin(), elements.end());
  return add(Kind::Array, place, elements.size());
}

KRBinaryPlist::Node KRBinaryPlist::addDictionary(std::span<const Node> keys, std::span<const Node> values) {
  const size_t place = links_.size();
  links_.insert(links_.end(), keys.begin(), keys.end());
  links_.insert(links_.end(), values.begin(), values.end());
  return add(Kind::Dictionary, place, keys.size());
}
