#include "platform/KRBinaryPlist.h"

#include <algorithm>
#include <bit>
#include <new>

#include "platform/KRBinaryPlistReader.h"
#include "platform/KRBinaryPlistWriter.h"

std::optional<KRBinaryPlist> KRBinaryPlist::read(std::string_view bytes) {
  return KRBinaryPlistReader(bytes).read();
}

std::string KRBinaryPlist::write() const {
  return std::string(KRBinaryPlistWriter(*this).write().view());
}

KRBinaryPlist::Value KRBinaryPlist::value(Node node) const noexcept {
  const uint64_t read = source_.count();
  if (node >= read) return node - read < values_.size() ? values_[node - read] : Value();
  const Value value = source_.find(node).value;
  return value.home == Value::Wide ? wideText(node) : value;
}

KRBinaryPlist::Value KRBinaryPlist::wideText(Node node) const noexcept {
  const auto known = std::lower_bound(wide_.begin(), wide_.end(), node,
                                      [](const Wide& each, Node sought) { return each.node < sought; });
  Value text;
  text.kind = static_cast<uint8_t>(Kind::Text);
  text.bits = known->place;
  text.size = known->size & 0xFFFFFFFFFFFFU;
  text.home = Value::Own;
  return text;
}

uint64_t KRBinaryPlist::bitsOf(Node node, Kind kind) const noexcept {
  const Value found = value(node);
  return found.is(kind) ? found.bits : 0;
}

std::string_view KRBinaryPlist::bytesOf(const Value& value) const noexcept {
  const std::string_view all = value.home == Value::Own ? std::string_view(own_) : source_.bytes();
  return {all.data() + value.bits, static_cast<size_t>(value.size)};
}

KRBinaryPlist::Links KRBinaryPlist::linksOf(const Value& value) const noexcept {
  if (value.home != Value::Own) return source_.links(value);
  const size_t count = value.linkCount();
  return count == 0 ? Links() : Links(links_.data() + value.bits, count);
}

KRBinaryPlist::Kind KRBinaryPlist::kind(Node node) const noexcept {
  return static_cast<Kind>(value(node).kind);
}

bool KRBinaryPlist::truth(Node node) const noexcept {
  return bitsOf(node, Kind::Truth) != 0;
}

int64_t KRBinaryPlist::integer(Node node) const noexcept {
  return static_cast<int64_t>(bitsOf(node, Kind::Integer));
}

uint64_t KRBinaryPlist::unsignedInteger(Node node) const noexcept {
  const int64_t number = integer(node);
  return number > 0 ? static_cast<uint64_t>(number) : bitsOf(node, Kind::Unsigned);
}

double KRBinaryPlist::real(Node node) const noexcept {
  return std::bit_cast<double>(bitsOf(node, Kind::Real));
}

double KRBinaryPlist::instant(Node node) const noexcept {
  return std::bit_cast<double>(bitsOf(node, Kind::Instant));
}

uint64_t KRBinaryPlist::uid(Node node) const noexcept {
  return bitsOf(node, Kind::Uid);
}

KRText KRBinaryPlist::text(Node node) const noexcept {
  const Value found = value(node);
  return found.is(Kind::Text) ? KRText(bytesOf(found)) : KRText();
}

std::string_view KRBinaryPlist::data(Node node) const noexcept {
  const Value found = value(node);
  return found.is(Kind::Data) ? bytesOf(found) : std::string_view();
}

KRBinaryPlist::Links KRBinaryPlist::elements(Node node) const noexcept {
  const Value found = value(node);
  return found.is(Kind::Array) ? linksOf(found) : Links();
}

KRBinaryPlist::Links KRBinaryPlist::keys(Node node) const noexcept {
  const Value found = value(node);
  return found.is(Kind::Dictionary) ? linksOf(found).part(0, found.size) : Links();
}

KRBinaryPlist::Links KRBinaryPlist::values(Node node) const noexcept {
  const Value found = value(node);
  return found.is(Kind::Dictionary) ? linksOf(found).part(found.size, found.size) : Links();
}

KRBinaryPlist::Node KRBinaryPlist::find(Node dictionary, KRText key) const noexcept {
  const Value found = value(dictionary);
  if (!found.is(Kind::Dictionary)) return kNone;
  const Links all = linksOf(found);
  for (size_t i = 0; i < found.size; ++i) {
    if (sameText(text(all[i]), key)) return all[found.size + i];
  }
  return kNone;
}

KRBinaryPlist::Node KRBinaryPlist::add(Kind kind, uint64_t bits, uint64_t size) {
  if (count() == kNone) throw std::bad_alloc();
  Value value;
  value.bits = bits;
  value.size = size & 0xFFFFFFFFFFFFU;
  value.kind = static_cast<uint8_t>(kind);
  value.home = Value::Own;
  values_.push_back(value);
  return static_cast<Node>(count() - 1);
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
  return add(Kind::Text, place, text.size());
}

KRBinaryPlist::Node KRBinaryPlist::addData(std::string_view bytes) {
  const size_t place = own_.size();
  own_.append(bytes);
  return add(Kind::Data, place, bytes.size());
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
