#pragma once

#include <vector>

#include "platform/KRPreferences.h"
#include "platform/KRString.h"

/// Changes of preferences that are not written yet, in the order in which their keys were first changed. Several
/// changes of one key are one, made one after the other; one that sets the whole value makes those before it void.
///
/// One thread at a time.
class KRPreferenceChanges {
 public:
  struct Entry {
    KRString key;
    /// Made one after the other.
    std::vector<KRPreferences::Change> steps;
    /// Whether the first step does not look at what is there.
    bool isWhole = false;

    /// A copy of what the steps make of the value; nothing for a key that goes.
    KRValue appliedTo(const KRValue& now) const;
  };

  /// Nothing removes the key. A value that cannot stand in a property list, and a key that is nothing, change nothing.
  void set(KRText key, const KRValue& value);
  /// A step whose outcome cannot stand in a property list leaves what was there.
  void update(KRText key, const KRPreferences::Change& change);

  /// The changes of the key; null when there are none. Valid until the next change.
  const Entry* find(KRText key) const;
  const std::vector<Entry>& entries() const noexcept { return entries_; }
  bool isEmpty() const noexcept { return entries_.empty(); }
  void clear() { entries_.clear(); }

 private:
  Entry& entryOf(KRText key);

  std::vector<Entry> entries_;
};
