#pragma once

#include "platform/KRObject.h"
#include "platform/KRString.h"

/// A country, told by its code.
class KRCountry : public KRObject {
 public:
  explicit KRCountry(KRString code) : code_(std::move(code)) {}

  /// The user's own country, from the region of the locale for addresses (LC_ALL, else LC_ADDRESS, else LANG); "US"
  /// when the locale names none. Read anew on every call. Safe from any thread as long as nobody changes the
  /// environment.
  static KRRef<KRCountry> local();

  /// ISO 3166-1 alpha-2, upper case: the code stored on new addresses.
  KRString code() const { return code_; }
  KRString description() const override { return code_; }

 private:
  KRString code_;
};
