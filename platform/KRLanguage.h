#pragma once

#include "platform/KRString.h"

/// The language in which the library speaks. Thread-safe.
class KRLanguage {
 public:
  /// The language of the texts, one of `available()`: as the host set it, else as the first of the environment
  /// variables LC_ALL, LC_MESSAGES and LANG that is not empty tells. "fr_CA.UTF-8" is "fr"; a language for which there
  /// are no texts is "en". The environment is read once, on the first call.
  static KRString current();

  /// Sets the language, "fr" or "fr_FR.UTF-8" or "fr-CA", for the whole process from now on. Nothing or empty goes back
  /// to the environment, which is then read anew.
  static void set(const KRString& language);

  /// The languages for which there are texts, sorted: "en", "fr".
  static KRStringList available();

  /// The country of the user's locale in two capital letters, "DE" for "de_DE.UTF-8": from what the host set when that
  /// names one, else from the first of LC_ALL, LC_ADDRESS and LANG that is not empty. Nothing when that names none.
  static KRString country();
};
