#pragma once

#include <cstddef>

#include "contacts/model/IKRPerson.h"
#include "platform/KRPrefetch.h"

/// For a walk over all persons of a list in order: asks for the memory of those that come next, so that reading them
/// does not wait for it. Persons of a large book lie scattered, and each is reached in two steps, the person and then
/// its record.
class KRPersonAhead {
 public:
  explicit KRPersonAhead(const KRPersonList& persons) noexcept : persons_(persons) {}

  /// To be called before the person at that place is read.
  void reach(size_t place) const {
    const size_t count = persons_.count();
    if (place + kFar < count) krPrefetch(persons_.at(place + kFar));
    if (place + kNear < count) persons_.at(place + kNear)->prefetch();
  }

 private:
  static constexpr size_t kNear = 6;
  static constexpr size_t kFar = 12;

  const KRPersonList& persons_;
};
