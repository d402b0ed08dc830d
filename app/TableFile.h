#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/TableOptions.h"
#include "import/KRCSVReading.h"
#include "import/KRPersonLoadNote.h"

/// A delimited file that is read as the options say.
class TableFile {
 public:
  /// A column and what it feeds, in words.
  struct Column {
    KRString heading;
    /// The first values that are there, different ones, at most three.
    KRStringList firstValues;
    KRString property;
    KRString label;
    KRString why;
  };
  /// A person, and how much of the file is done, in percent.
  using PersonSink = std::function<void(const KRRef<IKRPerson>&, double)>;

  /// Opens the file. Throws `Unusable` naming it when it cannot be read or the options do not fit it.
  TableFile(std::string file, const TableOptions& options);

  const std::string& file() const noexcept { return file_; }
  bool isStrict() const noexcept { return !reading_; }
  std::vector<Column> columns() const;
  /// The mapping, in the dialect of RFC 4180 only.
  const KRCSVMapping* mapping() const noexcept { return reading_ ? &reading_->mapping() : nullptr; }

  /// Hands over all persons, each behind the notes about it. Throws `Unusable` when the file cannot be read.
  void read(const PersonSink& sink, const KRPersonLoadNoteSink& notes);

 private:
  void readStrictly(const PersonSink& sink, const KRPersonLoadNoteSink& notes) const;
  std::vector<Column> strictColumns() const;

  std::string file_;
  std::optional<KRCSVReading> reading_;
};
