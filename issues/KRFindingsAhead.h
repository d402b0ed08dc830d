#pragma once

#include <cstddef>

#include "issues/KRIssueObject.h"
#include "platform/KRList.h"
#include "platform/KRPrefetch.h"

/// A walk over many findings that looks at their first persons: asks for the memory of those that come next, finding,
/// person and the person's record, so that the walk does not wait for each.
class KRFindingsAhead {
 public:
  explicit KRFindingsAhead(const KRList<KRIssueObject>& findings) noexcept : findings_(findings) {}

  /// Calls `visit(KRIssueObject&)` for each finding in order. The list must not change.
  template <class Visit>
  void walk(Visit visit) const {
    const size_t count = findings_.count();
    for (size_t i = 0; i < count; ++i) {
      if (i + 3 * kStep < count) findings_.at(i + 3 * kStep)->prefetch();
      if (i + 2 * kStep < count) krPrefetch(firstPerson(i + 2 * kStep));
      if (i + kStep < count) {
        if (const IKRPerson* person = firstPerson(i + kStep)) person->prefetch();
      }
      visit(*findings_.at(i));
    }
  }

 private:
  static constexpr size_t kStep = 6;

  const IKRPerson* firstPerson(size_t place) const {
    const KRPersonArray& persons = findings_.at(place)->borrowPersons();
    return persons.isEmpty() ? nullptr : *persons.begin();
  }

  const KRList<KRIssueObject>& findings_;
};
