#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "contacts/KRTempPerson.h"
#include "import/KRCSVCells.h"
#include "import/KRCSVDate.h"
#include "import/KRCSVDialect.h"
#include "import/KRCSVEntryReader.h"
#include "import/KRCSVLabels.h"
#include "import/KRCSVMapping.h"
#include "import/KRCSVNameReader.h"
#include "import/KRCSVPlan.h"
#include "import/KRCSVRemainder.h"
#include "import/KRCSVSplitter.h"

/// Makes a person of each row of a file under a mapping. Nothing of a row is lost: what fits nowhere is kept under
/// `KRProPertyOther`, labelled with its heading. One thread at a time; neither copied nor moved.
class KRCSVPersonMaker {
 public:
  KRCSVPersonMaker(const KRCSVMapping& mapping, const KRCSVDialect& dialect, KRCSVCells::Signs signs);
  KRCSVPersonMaker(const KRCSVPersonMaker&) = delete;
  KRCSVPersonMaker& operator=(const KRCSVPersonMaker&) = delete;

  /// Whether there are columns of dates whose form is not certain yet.
  bool wantsToLearn() const { return !plan_.dateColumns().empty() && !dates_.isCertain(); }
  /// Looks at a row before any person is made, to find out how dates are written.
  void learn(const KRCSVRow& row);

  /// The person of a row, or nothing when the row holds nothing.
  KRRef<KRTempPerson> person(const KRCSVRow& row);
  /// What could not be understood in the row that was made last, each a sentence in English.
  const std::vector<KRString>& problems() const noexcept { return remainder_.problems; }

 private:
  void readSingle(const KRCSVPlan::Single& single, KRTempPerson& person);
  void readBirthday(KRTempPerson& person);
  void readBirthdayParts(KRTempPerson& person);
  void readTags(KRTempPerson& person);
  void addTags(size_t column, KRValueList& tags) const;
  void setRemainder(KRTempPerson& person);

  KRCSVPlan plan_;
  KRCSVCells cells_;
  KRCSVSingles singles_;
  KRCSVDateReader dates_;
  KRCSVRemainder remainder_;
  KRCSVNameReader names_;
  KRCSVEntryReader entries_;
  std::vector<KRRef<KRLabel>> headingLabels_;
  /// The column that holds all tags of a person in our own files.
  std::vector<bool> isTagList_;
  size_t fedCount_;
};
