#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "contacts/KRTempPerson.h"
#include "contacts/model/KRObjectAddress.h"
#include "contacts/model/KRObjectInstantMessage.h"
#include "import/KRCSVDialect.h"
#include "import/KRCSVMapping.h"
#include "import/KRCSVPropertyItem.h"
#include "import/KRPersonLoad.h"
#include "platform/KRAtomic.h"
#include "platform/KRDate.h"

class KRCSVFile;

/// Loads persons from a delimited file with a heading row: decides from the headings, and where a heading says nothing
/// from the first row below, which property each column feeds, and makes a `KRTempPerson` of every further row. The
/// file is read by `KRCSVFile`, so its quoting is of the simplest kind.
///
/// What differs from loading vCards, on purpose: `stop` has no effect, a run always goes to the last row; and all
/// persons have the identifier "123". Labels of values are shared by the persons of a run.
///
/// A host that has files as people have them chooses the dialect of RFC 4180 (`KRCSVReading`): full quoting, names in
/// their natural places, a mapping that it may look at and change. There a run ends when it is stopped.
class KRPersonCSVLoad : public KRPersonLoad {
 public:
  /// As `KRPersonLoad::initWithFile`.
  static KRRef<KRPersonCSVLoad> initWithFile(const KRString& path);

  /// The dialect in which the run that is started next reads; strict until set.
  KRCSVDialect dialect() const { return dialect_.get(); }
  void setDialect(const KRCSVDialect& dialect) { dialect_.set(dialect); }
  /// The mapping by which that run reads in the dialect of RFC 4180; nothing, as it is at first, lets the file decide.
  /// It is made by `KRCSVReading`; one that has not as many columns as the file is passed over, with a note.
  std::optional<KRCSVMapping> mapping() const { return mapping_.get(); }
  void setMapping(std::optional<KRCSVMapping> mapping) { mapping_.set(std::move(mapping)); }

  /// The columns that feed each property, by the property's name; properties in the order of their first column,
  /// columns in the order of the file.
  using Mapping = std::vector<std::pair<KRString, std::vector<KRRef<KRCSVPropertyItem>>>>;

  /// Written form: `propertyByHeadItemArray:firstItemArray:`. The first data row may be shorter than the headings.
  static Mapping propertyByHeadItemArray(const KRStringList& headItemArray, const KRStringList& firstItemArray);
  /// The name of the property that a column of that heading feeds, and the label for its values (written form:
  /// `propertyNameByHeadItemName:outLabel:firstItem:`). A last name gets the label "Middle" and a middle name the label
  /// "Last": callers rely on it. `outLabel` may be null.
  static KRString propertyNameByHeadItemName(const KRString& headItemName, KRString* outLabel,
                                             const KRString& firstItem);

  /// The older form of both for callers without data (written forms: `propertyByHeadItemArray:`,
  /// `propertyNameByHeadItemName:outLabel:`). It does not know "iphone", looks at each property once, and compares
  /// whole names in exactly their case. The import itself does not use it.
  static Mapping propertyByHeadItemArray(const KRStringList& headItemArray);
  static KRString propertyNameByHeadItemName(const KRString& headItemName, KRString* outLabel);

  /// Whether the text looks like a phone number: digits, blanks, brackets, plus and minus. Only the low byte of each
  /// UTF-16 unit is looked at, and the empty text (nothing too) passes, both on purpose (written form:
  /// `isPhoneByValue:`).
  static bool isPhoneByValue(KRText value);
  /// Whether there is an at sign and a full stop anywhere in the text (written form: `isEmailByValue:`).
  static bool isEmailByValue(KRText value);

  /// The date of "1990/03/02", four, two and two digits; nothing for any other text (written form: `dateWithString:`).
  static std::optional<KRDate> dateWithString(KRText string);
  /// The text cut at every comma, blanks kept; none for nothing (written form: `arrayValueWithString:`).
  static KRRef<KRValueList> arrayValueWithString(const KRString& string);
  /// An address in the user's country whose fields, in the order in which they are written there, are the words of the
  /// text; of the words that find no field of their own the last one stands in the last field (written form:
  /// `addressValueWithString:`).
  static KRRef<KRObjectAddress> addressValueWithString(const KRString& string);
  /// An account with the service that the first word names, and the rest as user name, which loses the first word
  /// wherever it stands before a space; nothing for less than two words (written form: `instantMessageValue:`).
  static KRRef<KRObjectInstantMessage> instantMessageValue(const KRString& string);

  /// A new single value; nothing for a value of nothing (written forms: `singleValueByValue:property:`,
  /// `singleValueByValue:label:type:`).
  static KRRef<KRMutableSingleValue> singleValueByValue(KRValue value, const KRProperty* property) {
    return KRTempPerson::singleValueByMacValue(std::move(value), property);
  }
  static KRRef<KRMutableSingleValue> singleValueByValue(KRValue value, KRRef<KRLabel> label, int32_t type) {
    return KRTempPerson::singleValueByMacValue(std::move(value), std::move(label), type);
  }

 protected:
  void readPersons(const Run& run) override;

 private:
  using KRPersonLoad::KRPersonLoad;
  template <class T, class... Arguments>
  friend KRRef<T> krMake(Arguments&&...);

  void readStrictly();
  void readDialect(const Run& run, const KRCSVDialect& dialect);
  /// Tells of the lines that were dropped before another one, from the `next` of them on.
  void noteDropped(const KRCSVFile& file, size_t& next, uint64_t beforeLine) const;

  KRAtomic<KRCSVDialect> dialect_;
  KRAtomic<std::optional<KRCSVMapping>> mapping_;
};
