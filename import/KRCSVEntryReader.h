#pragma once

#include <cstddef>
#include <vector>

#include "contacts/KRTempPerson.h"
#include "contacts/model/KRInstantMessageServer.h"
#include "contacts/model/KRObjectAddress.h"
#include "import/KRCSVCells.h"
#include "import/KRCSVDate.h"
#include "import/KRCSVPlan.h"
#include "import/KRCSVRemainder.h"

/// Reads values of which a person may have several from a row: numbers, addresses, dates, accounts, and what fits
/// nowhere.
class KRCSVEntryReader {
 public:
  /// All of them outlive the reader.
  KRCSVEntryReader(const KRCSVPlan& plan, const KRCSVCells& cells, const KRCSVDateReader& dates,
                   KRCSVRemainder& remainder) noexcept
      : plan_(plan), cells_(cells), dates_(dates), remainder_(remainder) {}

  /// Sets the values of the row that the cells look at.
  void read(KRTempPerson& person);

 private:
  using Entry = KRCSVPlan::Entry;
  static constexpr size_t kNone = KRCSVCells::kNone;

  /// A multiple value that is being put together.
  struct Made {
    KRRef<KRMutableMultipleValue> values;
    size_t main = kNone;
  };

  static void finish(KROrdinal property, Made& made, KRTempPerson& person);
  void readValues(const Entry& entry, Made& made);
  void readAddress(const Entry& entry, Made& made);
  void readWholeAddress(const Entry& entry, size_t index, KRObjectAddress& address) const;
  KRString addressField(const std::vector<size_t>& columns, size_t index) const;
  KRValue valueOf(const Entry& entry, KRString text);
  KRValue dateOf(const Entry& entry, KRString text);
  KRInstantMessageServer* serverOf(const Entry& entry) const;
  KRRef<KRLabel> labelOf(const Entry& entry, size_t index) const;
  void add(const Entry& entry, size_t index, KRValue value, Made& made) const;

  const KRCSVPlan& plan_;
  const KRCSVCells& cells_;
  const KRCSVDateReader& dates_;
  KRCSVRemainder& remainder_;
};
