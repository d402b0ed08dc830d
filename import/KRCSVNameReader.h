#pragma once

#include <string_view>
#include <vector>

#include "contacts/KRTempPerson.h"
#include "import/KRCSVCells.h"
#include "import/KRCSVLabels.h"
#include "import/KRCSVPlan.h"
#include "import/KRCSVRemainder.h"

/// Reads the name of a person from a row: from columns of its parts, else from one of whole names.
class KRCSVNameReader {
 public:
  /// The parts of a name; each may be nothing.
  struct Parts {
    KRString first;
    KRString middle;
    KRString last;
  };

  /// Whether a whole name without a comma begins with the last name.
  explicit KRCSVNameReader(bool isLastNameFirst) noexcept : isLastNameFirst_(isLastNameFirst) {}

  /// Sets the name; a row that is named as its company becomes an organisation. A whole name that says more than the
  /// person's values is kept. The other single values have been set.
  void read(const KRCSVPlan::Name& columns, const KRCSVCells& cells, const KRCSVSingles& singles, KRTempPerson& person,
            KRCSVRemainder& remainder) const;

  /// A whole name in its natural parts. A comma behind the first part marks it as the last name.
  Parts split(std::string_view whole) const;

 private:
  bool isLastNameFirst_;
};
