#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "contacts/model/KRLabel.h"
#include "contacts/model/KRObjectAddress.h"
#include "contacts/model/KRProperty.h"
#include "import/KRCSVCells.h"
#include "import/KRCSVMapping.h"

/// Which columns of a file make which values together, worked out once from its mapping.
class KRCSVPlan {
 public:
  static constexpr size_t kNone = KRCSVCells::kNone;

  /// A value of a multiple property by the columns that feed it.
  struct Entry {
    KROrdinal property;
    uint32_t number;
    KRString label{};
    KRRef<KRLabel> fixedLabel{};
    std::vector<size_t> values{};
    size_t labels = kNone;
    size_t service = kNone;
    size_t main = kNone;
    std::array<std::vector<size_t>, kKRAddressFieldCount> fields{};
    size_t countryCode = kNone;
    size_t year = kNone;
    size_t month = kNone;
    size_t day = kNone;
    bool isDefault = false;
  };
  /// A property of one value, or the parts of one.
  struct Single {
    const KRProperty* property;
    std::vector<size_t> columns;
  };
  struct Name {
    std::vector<size_t> first;
    std::vector<size_t> middle;
    std::vector<size_t> last;
    std::vector<size_t> whole;
  };

  KRCSVPlan() = default;
  explicit KRCSVPlan(const KRCSVMapping& mapping);

  const Name& name() const noexcept { return name_; }
  /// In standard order, without name, birthday and tags.
  const std::vector<Single>& singles() const noexcept { return singles_; }
  const std::vector<size_t>& tags() const noexcept { return tags_; }
  /// The columns of year, month and day of birth, and those of whole birthdays.
  const std::array<size_t, 3>& birthdayParts() const noexcept { return birthdayParts_; }
  const std::vector<size_t>& birthdays() const noexcept { return birthdays_; }
  /// Values of multiple properties, in standard order of these.
  const std::vector<Entry>& entries() const noexcept { return entries_; }
  /// Columns of whole dates.
  const std::vector<size_t>& dateColumns() const noexcept { return dateColumns_; }
  /// At most how many properties a row can feed.
  size_t fedCount() const noexcept;

 private:
  void planName(const KRCSVColumn& column, size_t index);
  void planSingle(const KRCSVColumn& column, size_t index);
  void planBirthday(const KRCSVColumn& column, size_t index);
  class EntryFinder;
  void planEntry(const KRCSVColumn& column, size_t index, Entry& entry);

  Name name_;
  std::vector<Single> singles_;
  std::vector<size_t> tags_;
  std::array<size_t, 3> birthdayParts_ = {kNone, kNone, kNone};
  std::vector<size_t> birthdays_;
  std::vector<Entry> entries_;
  std::vector<size_t> dateColumns_;
};
