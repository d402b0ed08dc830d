#pragma once

#include <cstdint>

#include "contacts/model/KRLabel.h"
#include "platform/KRObject.h"
#include "platform/KRText.h"

/// The names of labels (and of the services of accounts) that occur in cards, numbered once for the process, so that a
/// row of a record names its label in two bytes.
///
/// The table is bounded: a name that is too long, or comes when the table is full, gets no number and stands in the
/// record as text. Names are never removed. Thread-safe; looking up a number takes no lock.
class KRLabelTable {
 public:
  static constexpr uint16_t kCapacity = 4096;
  static constexpr size_t kLongestName = 64;

  /// The number of the name, given to it on the first request; 0 for nothing and for a name that gets none.
  static uint16_t number(KRText name);
  /// The name of a number, valid as long as the process; nothing for 0.
  static KRText name(uint16_t number) noexcept;
  /// The shared label of that number, or nothing for 0.
  static KRRef<KRLabel> label(uint16_t number);
};
