#pragma once

#include <vector>

#include "contacts/KRTempPerson.h"

/// Joins two lists of trashed persons that grew from the same one, in two processes: what either added is in the
/// result, what either took out is not, and each person is in it once. A person of the file that is in the list of this
/// process too is answered as this process's object.
///
/// Trashed persons have no name of their own: the same contact may be trashed several times. They are matched by all
/// that is kept of them, one for one; a person that cannot be matched and might have been changed is kept, not lost.
class KRTrashMerge {
 public:
  using Persons = std::vector<KRRef<IKRPerson>>;

  /// `before` is what the file held when this process read or wrote it last, `mine` what this process wants it to hold,
  /// `theirs` what it holds now. In the order of `theirs`, what only `mine` has behind it. Linear.
  static Persons merged(const Persons& before, const Persons& mine, const std::vector<KRRef<KRTempPerson>>& theirs);

  /// Whether the two are kept as the same bytes: identifier, origin, groups, card and all values.
  static bool areSame(const KRTempPerson& a, const KRTempPerson& b);
};
