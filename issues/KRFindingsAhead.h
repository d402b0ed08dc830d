#pragma once

#include <cstddef>

#include "issues/KRIssueObject.h"
#include "platform/KRList.h"
#include "platform/KRPrefetch.h"

/// A walk over many findings that reads a property of their first persons: asks for the memory of those that come next,
/// finding, person, and what the property takes, so that the walk does not wait for each.
class KRFindingsAhead {
 public:
  KRFindingsAhead(const KRList<KRIssueObject>& findings, KROrdinal property) noexcept
      : findings_(findings), property_(property) {}

  /// Calls `visit(KRIssueObject&)` for each finding in order until one answers false; whether all were visited. The
  /// list must not change.
  template <class Visit>
  bool walk(Visit visit) const {
    const size_t count = findings_.count();
    for (size_t i = 0; i < count; ++i) {
      if (i + 4 * kStep < count) findings_.at(i + 4 * kStep)->prefetch();
      if (i + 3 * kStep < count) krPrefetch(firstPerson(i + 3 * kStep));
      if (i + 2 * kStep < count) ask(i + 2 * kStep, &IKRPerson::prefetchPlaces);
      if (i + kStep < count) ask(i + kStep, &IKRPerson::prefetchValue);
      if (!visit(*findings_.at(i))) return false;
    }
    return true;
  }

 private:
  static constexpr size_t kStep = 8;

  const IKRPerson* firstPerson(size_t place) const {
    const KRPersonArray& persons = findings_.at(place)->borrowPersons();
    return persons.isEmpty() ? nullptr : *persons.begin();
  }

  void ask(size_t place, void (IKRPerson::*prefetch)(KROrdinal) const noexcept) const {
    if (const IKRPerson* person = firstPerson(place)) (person->*prefetch)(property_);
  }

  const KRList<KRIssueObject>& findings_;
  KROrdinal property_;
};
