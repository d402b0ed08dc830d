#pragma once

#include <mutex>

#include "platform/KRPreferenceChanges.h"
#include "platform/KRPreferences.h"

/// Preferences in memory over another store: it answers what the other answers, except for what was changed here, and
/// writes nothing until `commit`. For dry runs, plans and sessions that the user may yet leave without saving.
class KRPreferencesOverlay : public KRPreferences {
 public:
  /// Over nothing, it is a store of its own that begins empty and keeps nothing.
  explicit KRPreferencesOverlay(KRRef<KRPreferences> under) : under_(std::move(under)) {}

  KRValue value(KRText key) override;
  void setValue(const KRValue& value, KRText forKey) override;
  void update(KRText key, const Change& change) override;
  void remove(KRText key) override;
  /// Success, without doing anything: nothing here is meant for the disk.
  KRResult<void> flush() override;

  /// Hands the changes to the store underneath, in the order in which their keys were first changed, flushes that, and
  /// forgets them here. What is so there already is not written. Its error, if any, is that of the flush. An `update`
  /// is made anew of what is there by then.
  KRResult<void> commit();

  /// Forgets the changes.
  void forget();

  /// Whether something was changed, is not as it is underneath, and was neither committed nor forgotten.
  bool hasChanges() const;

 private:
  bool isDifference(const KRPreferenceChanges::Entry& change) const;

  const KRRef<KRPreferences> under_;
  mutable std::mutex lock_;
  KRPreferenceChanges changes_;
};
