#include <vector>

#include "handles/KRIssueHandle.h"
#include "handles/KRMergedEntries.h"

// How a merge makes one value of those of several persons.

namespace {

/// The joined tags. Only what stood there before a person is passed over: a tag that one person lists twice stays
/// twice.
class JoinedTags {
 public:
  void add(const std::vector<KRValue>& tags) {
    const size_t before = joined_.size();
    for (const KRValue& tag : tags) {
      const uint64_t hash = tag.hash();
      const uint32_t found = places_.find(hash, [&](uint32_t place) { return joined_[place].isEqual(tag); });
      if (found < before) continue;
      if (found == KRHashIndex::kNone) places_.add(hash, static_cast<uint32_t>(joined_.size()));
      joined_.push_back(tag);
    }
  }

  KRRef<KRStoredValue> result() const {
    if (joined_.empty()) return {};
    auto value = krMake<KRMutableSingleValue>();
    value->setValue(krMake<KRValueList>(joined_));
    return value;
  }

 private:
  std::vector<KRValue> joined_;
  KRHashIndex places_;
};

}  // namespace

KRRef<KRStoredValue> KRIssueHandle::mergeSingleValue(const KRProperty* property,
                                                     const KRPersonArray& personArray) const {
  if (property == nullptr) return {};
  const bool isTags = sameText(property->name(), KRProPertyTags);
  JoinedTags tags;
  for (const IKRPerson* person : personArray) {
    KRRef<KRStoredValue> value = person->valueByProperty(property);
    if (!value) continue;
    if (!isTags) return value;
    const auto* single = dynamic_cast<const KRMutableSingleValue*>(value.get());
    const auto* list = single != nullptr ? single->value().as<KRValueList>() : nullptr;
    if (list != nullptr) tags.add(list->values());
  }
  return tags.result();
}

KRRef<KRMutableMultipleValue> KRIssueHandle::mergeMultipleValue(const KRProperty* property,
                                                                const KRPersonArray& personArray) const {
  if (property == nullptr) return {};
  KRMergedEntries merged(property->name());
  for (const IKRPerson* person : personArray) {
    const KRRef<KRStoredValue> value = person->valueByProperty(property);
    if (const auto* entries = dynamic_cast<const KRMutableMultipleValue*>(value.get())) merged.add(*entries);
  }
  return merged.result();
}

bool KRIssueHandle::isMulitipleValue(const KRMutableMultipleValue* multipleValue, const KRMutableSingleValue* hasValue,
                                     const KRProperty* property) const {
  if (multipleValue == nullptr) return false;
  const KREntryRule& rule = krEntryRule(property != nullptr ? property->name() : KRString());
  const KRValue added = hasValue != nullptr ? hasValue->value() : KRValue();
  for (size_t i = 0; i < multipleValue->count(); ++i) {
    if (rule.isSame(multipleValue->valueAtIndex(i)->value(), added)) return true;
  }
  return false;
}
