#include "platform/KRPreferencesOverlay.h"

#include <algorithm>

KRValue KRPreferencesOverlay::value(KRText key) {
  const std::lock_guard lock(lock_);
  const KRPreferenceChanges::Entry* changed = changes_.find(key);
  const KRValue below = under_ && (changed == nullptr || !changed->isWhole) ? under_->value(key) : KRValue();
  return changed != nullptr ? changed->appliedTo(below) : below;
}

void KRPreferencesOverlay::setValue(const KRValue& value, KRText forKey) {
  const std::lock_guard lock(lock_);
  changes_.set(forKey, value);
}

void KRPreferencesOverlay::update(KRText key, const Change& change) {
  const std::lock_guard lock(lock_);
  changes_.update(key, change);
}

void KRPreferencesOverlay::remove(KRText key) {
  setValue(KRValue(), key);
}

KRResult<void> KRPreferencesOverlay::flush() {
  return {};
}

KRResult<void> KRPreferencesOverlay::commit() {
  if (!under_) return {};
  // Held until the end, so that no reader sees the changes gone from here and not yet there.
  const std::lock_guard lock(lock_);
  for (const KRPreferenceChanges::Entry& each : changes_.entries()) {
    if (!isDifference(each)) continue;
    if (each.isWhole) {
      under_->setValue(each.appliedTo(KRValue()), each.key);
    } else {
      under_->update(each.key, [each](const KRValue& now) { return each.appliedTo(now); });
    }
  }
  changes_.clear();
  return under_->flush();
}

void KRPreferencesOverlay::forget() {
  const std::lock_guard lock(lock_);
  changes_.clear();
}

bool KRPreferencesOverlay::hasChanges() const {
  const std::lock_guard lock(lock_);
  return std::any_of(changes_.entries().begin(), changes_.entries().end(),
                     [&](const KRPreferenceChanges::Entry& each) { return isDifference(each); });
}

bool KRPreferencesOverlay::isDifference(const KRPreferenceChanges::Entry& change) const {
  const KRValue now = under_ ? under_->value(change.key) : KRValue();
  return !change.appliedTo(now).isEqual(now);
}
