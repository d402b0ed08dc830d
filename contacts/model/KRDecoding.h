#pragma once

#include "platform/KRKeyedUnarchiver.h"

// For the decoders of values: fields of one kind. Nothing, and a missing key, is nothing; a field of another kind means
// that the archive is damaged.

inline KRString krDecodeText(KRKeyedUnarchiver& coder, KRText forKey) {
  const KRValue value = coder.decode(forKey);
  if (!value.isNothing() && value.asText() == nullptr) coder.fail();
  return value.text();
}

template <class T>
KRRef<T> krDecodeObject(KRKeyedUnarchiver& coder, KRText forKey) {
  const KRValue value = coder.decode(forKey);
  T* object = value.as<T>();
  if (!value.isNothing() && object == nullptr) coder.fail();
  return KRRef<T>(object);
}
