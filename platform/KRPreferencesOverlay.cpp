#include "platform/KRPreferencesOverlay.h"

#include <algorithm>
#include <utility>

#include "platform/KRPlistValue.h"

KRValue KRPreferencesOverlay::value(KRText key) {
  {
    const std::lock_guard lock(lock_);
    const auto changed =
        std::find_if(changes_.begin(), changes_.end(), [&](const Change& each) { return each.key == key; });
    if (changed != changes_.end()) return krCopyThroughPlist(changed->value);
  }
  return under_ ? under_->value(key) : KRValue();
}

void KRPreferencesOverlay::setValue(const KRValue& value, KRText forKey) {
  if (value.isNothing()) return remove(forKey);
  KRValue copy = krCopyThroughPlist(value);
  if (!copy.isNothing()) change(forKey, std::move(copy));
}

void KRPreferencesOverlay::remove(KRText key) {
  change(key, KRValue());
}

void KRPreferencesOverlay::change(KRText key, KRValue value) {
  if (key.isNothing()) return;
  const std::lock_guard lock(lock_);
  const auto changed =
      std::find_if(changes_.begin(), changes_.end(), [&](const Change& each) { return each.key == key; });
  if (changed != changes_.end()) {
    changed->value = std::move(value);
  } else {
    changes_.push_back({KRString(key), std::move(value)});
  }
}

KRResult<void> KRPreferencesOverlay::flush() {
  return {};
}

KRResult<void> KRPreferencesOverlay::commit() {
  if (!under_) return {};
  // Held until the end, so that no reader sees the changes gone from here and not yet there.
  const std::lock_guard lock(lock_);
  for (const Change& each : changes_) under_->setValue(each.value, each.key);
  changes_.clear();
  return under_->flush();
}

void KRPreferencesOverlay::forget() {
  const std::lock_guard lock(lock_);
  changes_.clear();
}

bool KRPreferencesOverlay::hasChanges() const {
  const std::lock_guard lock(lock_);
  return !changes_.empty();
}
