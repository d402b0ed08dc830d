#pragma once

#include "platform/KRString.h"

/// The library's own texts in the user's language.
class KRSupportFuction {
 public:
  /// The text under `key` in the table "Localizable" of the library's resources (written form: `loadString:`). A key
  /// that the table lacks is its own text; no key is the key "nil". The language is `KRLanguage::current()` at the time
  /// of the call. Thread-safe.
  static KRString loadString(const KRString& key);
};
