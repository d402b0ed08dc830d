#include "contacts/model/KRMutableMultipleValue.h"

#include <algorithm>

#include "contacts/model/KRDecoding.h"
#include "contacts/model/KRProperty.h"
#include "platform/KRHash.h"
#include "platform/KRKeyedArchiver.h"

int32_t KRMutableMultipleValue::type() const {
  return KRValueType::Multiple;
}

KRMutableSingleValue* KRMutableMultipleValue::valueAtIndex(size_t index) const {
  return index < entries_.size() ? entries_[index].get() : nullptr;
}

void KRMutableMultipleValue::addValue(KRRef<KRMutableSingleValue> value) {
  if (value) entries_.push_back(std::move(value));
}

void KRMutableMultipleValue::removeValueAtIndex(size_t index) {
  if (index >= entries_.size()) return;
  entries_.erase(entries_.begin() + static_cast<ptrdiff_t>(index));
  if (main_ == kNone || index > main_) return;
  main_ = index == main_ ? kNone : main_ - 1;
}

KRMutableSingleValue* KRMutableMultipleValue::mainValue() const {
  return valueAtIndex(main_ == kNone ? 0 : main_);
}

void KRMutableMultipleValue::setMainIndex(size_t index) {
  main_ = index < entries_.size() ? index : kNone;
}

KRRef<KRMutableMultipleValue> KRMutableMultipleValue::mutableCopy() const {
  auto copy = krMake<KRMutableMultipleValue>();
  copy->entries_ = entries_;
  copy->main_ = main_;
  return copy;
}

bool KRMutableMultipleValue::isEqual(const KRObject* other) const {
  const auto* multiple = dynamic_cast<const KRMutableMultipleValue*>(other);
  return multiple != nullptr &&
         std::equal(entries_.begin(), entries_.end(), multiple->entries_.begin(), multiple->entries_.end(),
                    [](const auto& a, const auto& b) { return a->isEqual(b.get()); });
}

uint64_t KRMutableMultipleValue::hash() const {
  uint64_t running = entries_.size();
  for (const auto& entry : entries_) running = krHashMix(running, entry->hash());
  return running;
}

KRString KRMutableMultipleValue::description() const {
  std::string text = "(";
  for (const auto& entry : entries_) {
    if (text.size() > 1) text += ", ";
    text += entry->description().view();
  }
  return KRString::trusted(text + ")");
}

KRText KRMutableMultipleValue::archiveClassName() const {
  return "KRMutableMultipleValue";
}

void KRMutableMultipleValue::encodeWithCoder(KRKeyedArchiver& coder) const {
  coder.encode(krMake<KRValueList>(std::vector<KRValue>(entries_.begin(), entries_.end())), "entries");
  if (main_ != kNone) coder.encodeInteger(static_cast<int64_t>(main_), "main");
}

KRRef<KRObject> KRMutableMultipleValue::decode(KRKeyedUnarchiver& coder) {
  auto multiple = krMake<KRMutableMultipleValue>();
  if (const auto entries = krDecodeObject<KRValueList>(coder, "entries")) {
    for (const KRValue& entry : entries->values()) {
      auto* value = entry.as<KRMutableSingleValue>();
      if (value == nullptr) coder.fail();
      multiple->addValue(KRRef<KRMutableSingleValue>(value));
    }
  }
  multiple->setMainIndex(static_cast<size_t>(coder.decodeInteger("main").value_or(-1)));
  return multiple;
}
