#include "platform/KRValue.h"

#include <algorithm>
#include <cstdio>

#include "platform/KRHash.h"

namespace {

template <class... Cases>
struct Overloaded : Cases... {
  using Cases::operator()...;
};
template <class... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

KRString numberText(double number) {
  char text[40];
  const int size = std::snprintf(text, sizeof text, "%.17g", number);
  return KRString::trusted(std::string_view(text, static_cast<size_t>(size)));
}

}  // namespace

KRString KRValue::text() const {
  const KRString* text = asText();
  return text != nullptr ? *text : KRString();
}

KRObject* KRValue::object() const noexcept {
  const auto* reference = std::get_if<KRRef<KRObject>>(&value_);
  return reference != nullptr ? reference->get() : nullptr;
}

bool KRValue::isEqual(const KRValue& other) const {
  if (value_.index() != other.value_.index()) return false;
  if (const KRObject* mine = object()) return krEqualObjects(mine, other.object());
  return value_ == other.value_;
}

uint64_t KRValue::hash() const {
  return std::visit(
      Overloaded{[](std::monostate) { return uint64_t{0}; }, [](const KRString& text) { return text.hash(); },
                 [](const KRDate& date) { return date.hash(); }, [](bool truth) { return krHashMix(1, truth ? 1 : 0); },
                 [](int64_t whole) { return krHashMix(2, static_cast<uint64_t>(whole)); },
                 [](double number) {
                   // Both zeros are equal, so they hash alike.
                   const double plain = number == 0.0 ? 0.0 : number;
                   return krHashBytes(&plain, sizeof plain);
                 },
                 [](const KRRef<KRObject>& object) { return object->hash(); }},
      value_);
}

KRString KRValue::description() const {
  return std::visit(Overloaded{[](std::monostate) { return "(null)"_kr; }, [](const KRString& text) { return text; },
                               [](const KRDate& date) { return date.description(); },
                               [](bool truth) { return truth ? "1"_kr : "0"_kr; },
                               [](int64_t whole) { return KRString(std::to_string(whole)); },
                               [](double number) { return numberText(number); },
                               [](const KRRef<KRObject>& object) { return object->description(); }},
                    value_);
}

KRRef<KRValueList> KRValueList::ofTexts(const KRStringList& texts) {
  return krMake<KRValueList>(std::vector<KRValue>(texts.begin(), texts.end()));
}

KRStringList KRValueList::texts() const {
  KRStringList texts;
  for (const KRValue& value : values_) {
    if (const KRString* text = value.asText()) texts.push_back(*text);
  }
  return texts;
}

bool KRValueList::isEqual(const KRObject* other) const {
  const auto* list = dynamic_cast<const KRValueList*>(other);
  return list != nullptr && std::equal(values_.begin(), values_.end(), list->values_.begin(), list->values_.end(),
                                       [](const KRValue& a, const KRValue& b) { return a.isEqual(b); });
}

uint64_t KRValueList::hash() const {
  uint64_t running = values_.size();
  for (const KRValue& value : values_) running = krHashMix(running, value.hash());
  return running;
}

KRString KRValueList::description() const {
  std::string text = "(";
  for (const KRValue& value : values_) {
    if (text.size() > 1) text += ", ";
    text += value.description().view();
  }
  return KRString::trusted(text + ")");
}

const KRValue* KRValueMap::find(KRText key) const noexcept {
  const auto found =
      std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) { return entry.key == key; });
  return found == entries_.end() ? nullptr : &found->value;
}

void KRValueMap::set(KRString key, KRValue value) {
  const auto found =
      std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) { return entry.key == key; });
  if (found != entries_.end()) {
    found->value = std::move(value);
  } else {
    entries_.push_back({std::move(key), std::move(value)});
  }
}

bool KRValueMap::isEqual(const KRObject* other) const {
  const auto* map = dynamic_cast<const KRValueMap*>(other);
  if (map == nullptr || map->entries_.size() != entries_.size()) return false;
  return std::all_of(entries_.begin(), entries_.end(), [&](const Entry& entry) {
    const KRValue* theirs = map->find(entry.key);
    return theirs != nullptr && theirs->isEqual(entry.value);
  });
}

uint64_t KRValueMap::hash() const {
  // A sum, because equality does not see the order.
  uint64_t sum = entries_.size();
  for (const Entry& entry : entries_) sum += krHashMix(entry.key.hash(), entry.value.hash());
  return sum;
}

KRString KRValueMap::description() const {
  std::vector<const Entry*> sorted;
  for (const Entry& entry : entries_) sorted.push_back(&entry);
  std::sort(sorted.begin(), sorted.end(), [](const Entry* a, const Entry* b) { return a->key.view() < b->key.view(); });
  std::string text = "{";
  for (const Entry* entry : sorted) {
    if (text.size() > 1) text += ", ";
    text.append(entry->key.view()).append(" = ").append(entry->value.description().view());
  }
  return KRString::trusted(text + "}");
}

bool KRData::isEqual(const KRObject* other) const {
  const auto* data = dynamic_cast<const KRData*>(other);
  return data != nullptr && data->bytes_ == bytes_;
}

uint64_t KRData::hash() const {
  return krHashBytes(bytes_.data(), bytes_.size());
}

KRString KRData::description() const {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text = "<";
  text.reserve(bytes_.size() * 2 + 2);
  for (const char c : bytes_) {
    const auto byte = static_cast<unsigned char>(c);
    text += kDigits[byte >> 4U];
    text += kDigits[byte & 0xFU];
  }
  return KRString::trusted(text + ">");
}
