#pragma once

#include "platform/KRString.h"

/// The language in which the library speaks. Thread-safe.
class KRLanguage {
 public:
  /// The language of the texts: the first of these that names a language for which there are texts, else "en":
  /// what the host set; else the first of the environment variables LC_ALL, LC_MESSAGES and LANG that is not empty, as
  /// the system's own rule is. "fr_CA.UTF-8" names "fr".
  ///
  /// The environment is read once, on the first call.
  static KRString current();

  /// Sets the language, "fr" or "fr_FR.UTF-8" or "fr-CA", for the whole process from now on. Nothing or empty goes back
  /// to the environment, which is then read anew.
  static void set(const KRString& language);

  /// The languages for which there are texts, sorted: "en", "fr".
  static KRStringList available();

  /// The country that goes with the user's locale, "DE" for "de_DE.UTF-8", from what the host set, else LC_ALL,
  /// LC_ADDRESS or LANG. Nothing when it names none.
  static KRString country();
};
