#include "platform/KRPreferenceChanges.h"

#include <algorithm>
#include <utility>

#include "platform/KRPlistValue.h"

KRValue KRPreferenceChanges::Entry::appliedTo(const KRValue& now) const {
  KRValue value = krCopyThroughPlist(now);
  for (const KRPreferences::Change& step : steps) {
    const KRValue next = step(value);
    KRValue copy = krCopyThroughPlist(next);
    if (next.isNothing() || !copy.isNothing()) value = std::move(copy);
  }
  return value;
}

void KRPreferenceChanges::set(KRText key, const KRValue& value) {
  KRValue copy = krCopyThroughPlist(value);
  if (key.isNothing() || copy.isNothing() != value.isNothing()) return;
  Entry& entry = entryOf(key);
  entry.steps.assign(1, [copy = std::move(copy)](const KRValue&) { return copy; });
  entry.isWhole = true;
}

void KRPreferenceChanges::update(KRText key, const KRPreferences::Change& change) {
  if (!key.isNothing()) entryOf(key).steps.push_back(change);
}

const KRPreferenceChanges::Entry* KRPreferenceChanges::find(KRText key) const {
  const auto found =
      std::find_if(entries_.begin(), entries_.end(), [&](const Entry& each) { return sameText(each.key, key); });
  return found == entries_.end() ? nullptr : &*found;
}

KRPreferenceChanges::Entry& KRPreferenceChanges::entryOf(KRText key) {
  if (const Entry* present = find(key)) return entries_[static_cast<size_t>(present - entries_.data())];
  return entries_.emplace_back(Entry{KRString(key), {}});
}
