#pragma once

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

  /// Removes the key and its value (written form: `removeObjectForKey:`); written out like a change.
  virtual void remove(KRText key) = 0;

  /// Sees to it that everything set is safe on disk; the error says what is not. What is set is written out at once and
  /// flushed by itself, so this writes only what could not be written before.
  virtual KRResult<void> flush() = 0;
};
