#pragma once

#include <functional>

#include "platform/KRResult.h"
#include "platform/KRValue.h"

/// The user's preferences: values by key, kept between runs. The shared settings of the engine read and write the
/// standard store, which is the host's file unless the host puts another in its place, such as a `KRPreferencesOverlay`
/// for a run that must not write.
///
/// Values are what property lists hold: text, truth, numbers, bytes, dates with a year, and lists and maps of these.
/// They are copied in and out: changing a list afterwards changes no preference.
///
/// Every operation is thread-safe.
class KRPreferences : public KRObject {
 public:
  /// The standard store: what `setStandard` was given, else the file of this host (`KRFilePreferences::forHost`), made
  /// on the first call and never destroyed while it is the standard one.
  static KRRef<KRPreferences> standard();

  /// Puts another store in the standard one's place; nothing goes back to the host's file, read anew. Whoever holds the
  /// former store can still use it.
  static void setStandard(KRRef<KRPreferences> preferences);

  /// The value under the key; nothing when there is none.
  virtual KRValue value(KRText key) = 0;

  /// Sets the value under the key (written form: `setObject:forKey:`) and writes it out at once. Nothing removes the
  /// key. A value that cannot stand in a property list, and a key that is nothing, change nothing. A write that fails
  /// is not lost: the value is kept in memory, read from there, and written with the next change or flush.
  virtual void setValue(const KRValue& value, KRText forKey) = 0;

  /// What becomes of the value under a key: given the one that is there, nothing when there is none, it returns the one
  /// that is to be there, nothing for none. It touches no preferences, and may be called several times.
  using Change = std::function<KRValue(const KRValue& now)>;

  /// Changes a part of the value under the key, such as one entry of a list, and leaves the rest as it is when the
  /// change is written, whoever wrote it; else like `setValue`. This is how two processes add to one list. A store that
  /// is not shared with others need not implement it.
  virtual void update(KRText key, const Change& change) { setValue(change(value(key)), key); }

  /// Removes the key and its value (written form: `removeObjectForKey:`); written out like a change.
  virtual void remove(KRText key) = 0;

  /// Sees to it that everything set is safe on disk; the error says what is not. What is set is written out at once and
  /// flushed by itself, so this writes only what could not be written before.
  virtual KRResult<void> flush() = 0;
};
