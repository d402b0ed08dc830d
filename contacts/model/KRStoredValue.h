#pragma once

#include <cstdint>

#include "platform/KRObject.h"

/// What a person holds under a property: a `KRMutableSingleValue` or a `KRMutableMultipleValue`.
class KRStoredValue : public KRObject {
 public:
  /// The type code (`KRValueType`); 12 exactly for a multiple value.
  virtual int32_t type() const = 0;
};
