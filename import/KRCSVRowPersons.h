#pragma once

#include <cstdint>
#include <vector>

#include "import/KRPersonCSVLoad.h"

class KRCSVFile;

/// Makes the persons of the rows of a `KRCSVFile` under a mapping: what the loader's run does for each row. One thread
/// at a time.
class KRCSVRowPersons {
 public:
  explicit KRCSVRowPersons(const KRPersonCSVLoad::Mapping& mapping);

  KRRef<IKRPerson> personOfRow(const KRCSVFile& file, uint64_t row);

 private:
  struct Column {
    uint64_t index;
    /// Nothing for a whole name.
    KRString part;
    KRRef<KRLabel> label;
  };
  /// A property with its columns, and the label that its single value gets.
  struct Fed {
    const KRProperty* property;
    std::vector<Column> columns;
    KRRef<KRLabel> label;
  };

  static KRRef<KRStoredValue> name(const Fed& fed, const KRCSVFile& file, uint64_t row);
  static KRRef<KRStoredValue> single(const Fed& fed, const KRCSVFile& file, uint64_t row);
  static KRRef<KRStoredValue> multiple(const Fed& fed, const KRCSVFile& file, uint64_t row);

  /// In standard order, which is the quickest to fill a person in.
  std::vector<Fed> fed_;
};
