#pragma once

#include <string_view>

#include "platform/KRString.h"

class KRData;

/// Digests for telling data apart, not for keeping secrets. Thread-safe.
class KRDigest {
 public:
  /// The MD5 digest as 32 lower-case hexadecimal characters. Nothing for absent data, and when the machine's
  /// cryptography refuses MD5; the digest of no bytes is a digest.
  static KRString md5(const KRData* data);
  static KRString md5(std::string_view bytes);

  /// The SHA-256 digest as 64 lower-case hexadecimal characters, for what is remembered or sent: nobody makes another
  /// text of the same digest. Nothing when the machine's cryptography refuses it.
  static KRString sha256(std::string_view bytes);
};
