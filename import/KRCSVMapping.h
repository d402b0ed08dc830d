#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "import/KRCSVTarget.h"
#include "platform/KRResult.h"
#include "platform/KRString.h"

/// One column of a file, and what it feeds.
struct KRCSVColumn {
  enum class Why : uint8_t {
    /// Nothing was known: the values are kept under `KRProPertyOther`.
    Unknown,
    /// The heading is one that programs write.
    Heading,
    /// The heading says nothing, and the first values are all telephone numbers or all e-mail addresses.
    Values,
    /// The host has chosen.
    Chosen,
    /// A mapping saved under a name says so.
    Saved,
  };

  /// As written in the file, or "Column 3" where the file has no headings or none for this column.
  KRString heading;
  KRCSVTarget target{};
  /// The label for the values; nothing when they have none of their own or a column of labels.
  KRString label{};
  /// Ties columns of one property and label to one value; 0 for none.
  uint32_t number = 0;
  Why why = Why::Unknown;
  /// The preset in which the heading stands, or nothing.
  KRString preset{};

  /// Why the column feeds what it feeds, as a few words in English.
  KRString reason() const;
};

/// What the columns of a file feed: found out from the headings and the first values, changed by the host before a run,
/// and kept under a name to be used again. A value.
class KRCSVMapping {
 public:
  using Row = KRStringList;

  /// The heading that marks a file that this library has written, and the one of a file whose cells have no guards.
  static constexpr KRString kOwnMark = "KRAddressBookManagerSDK 1"_kr;
  static constexpr KRString kOwnRawMark = "KRAddressBookManagerSDK 1 raw"_kr;

  /// The heading under which such a file has pictures, in base64.
  static constexpr KRString kOwnPhoto = "Photo"_kr;

  KRCSVMapping() = default;
  /// The mapping of a file with these headings and first rows. With the name of a preset only its headings and the
  /// shortest ones are understood; nothing means all presets.
  static KRCSVMapping of(const Row& headings, const std::vector<Row>& firstRows, KRText preset = {});
  /// The mapping of a file without headings.
  static KRCSVMapping ofColumns(size_t count, const std::vector<Row>& firstRows);

  const std::vector<KRCSVColumn>& columns() const noexcept { return columns_; }
  /// Whether this library wrote the file, and whether with guarded cells.
  bool isOwn() const noexcept { return isOwn_; }
  bool isOwnRaw() const noexcept { return isOwnRaw_; }
  /// The preset in which most headings stand; nothing when none does.
  KRString preset() const;

  /// Chooses what a column feeds. It is named by its heading, in any case, or as "Column 3"; all columns of the same
  /// heading are changed. `InvalidArgument` for a heading or a property that there is not: the sentence lists those
  /// that there are.
  KRResult<void> set(KRText heading, KRText property, KRText label = {});
  /// The same from "HEADING=PROPERTY" or "HEADING=PROPERTY:LABEL".
  KRResult<void> set(KRText assignment);

  /// Keeps this mapping in the standard preferences under a name, in place of one that is there. `InvalidArgument` for
  /// no name.
  KRResult<void> save(const KRString& name) const;
  /// Lets the columns whose headings stand in the mapping saved under the name feed what they feed there. `NotFound`
  /// when there is none; the sentence lists those that there are.
  KRResult<void> use(const KRString& name);
  /// The names of the saved mappings, sorted.
  static KRStringList savedNames();
  /// The columns of the mapping saved under the name, none where there is none such; each by its heading, with what it
  /// feeds and its label.
  static std::vector<KRCSVColumn> savedColumns(const KRString& name);
  /// Forgets one; success when there is none.
  static KRResult<void> removeSaved(const KRString& name);

 private:
  void settleOwn();
  void settleNames();
  void settleTitles();
  void settleBirthday();
  bool feeds(KRCSVTarget target) const;
  std::vector<KRCSVColumn*> columnsNamed(KRText heading);
  KRError noSuchHeading(KRText heading) const;

  std::vector<KRCSVColumn> columns_;
  bool isOwn_ = false;
  bool isOwnRaw_ = false;
};
