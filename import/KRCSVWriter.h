#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/model/IKRPerson.h"
#include "import/KRCSVDialect.h"
#include "platform/KRResult.h"

/// Writes contacts as a delimited file (RFC 4180, UTF-8, comma, carriage return and line feed) with a numbered pair of
/// columns, label and value, for each value of which there may be several; the headings are those that web mail
/// exports.
///
/// `KRCSVReading` reads the file back to the same contacts: the last heading marks it as ours, an empty text is told
/// from none by its quotes, pictures are base64. IDs, tags kept apart from the property, and fields of addresses beyond
/// the standard ones are not written.
///
/// No cell can be run as a formula by a spreadsheet: one that begins with = + - @ ' tab or carriage return gets an
/// apostrophe in front, which reading takes off again.
///
/// It walks over the contacts twice: `measure` each of them, then `begin`, then `append` each. One thread at a time.
class KRCSVWriter {
 public:
  struct Options {
    /// Leaves cells as they are; such a file is for programs and is marked so.
    bool hasRawCells = false;
    bool hasPictures = true;
  };

  KRCSVWriter() = default;
  explicit KRCSVWriter(const Options& options) : options_(options) {}

  /// Notes which columns the contact needs.
  void measure(const IKRPerson& person);
  /// Writes the headings.
  void begin(std::string& to);
  /// How many columns there are, once `begin` was called. A file of more than `KRCSVReading::kMostColumns`, or with
  /// longer headings than are read, is not read back as a whole.
  size_t columnCount() const noexcept { return columnCount_; }
  /// Writes the row of a contact that was measured.
  void append(const IKRPerson& person, std::string& to);

  /// The bytes of a file of these contacts.
  static std::string bytes(const KRPersonList& persons, const Options& options);
  static std::string bytes(const KRPersonList& persons) { return bytes(persons, Options()); }
  /// Puts such a file at the path, whole or not at all, as `KRFile::write` does.
  static KRResult<void> write(const KRPersonList& persons, KRText path, const Options& options);

 private:
  /// How many columns the values of one multiple property need.
  struct Width {
    size_t entries = 0;
    bool hasMain = false;
    std::array<bool, kKRAddressFieldCount> fields{};
    bool hasCountryCode = false;
  };

  void measureEntries(KROrdinal property, const IKRPerson& person);
  void cell(KRText text, std::string& to);
  void endRow(std::string& to);
  void beginEntries(KROrdinal property, std::string_view word, std::string& to);
  void appendSingle(KROrdinal property, const IKRPerson& person, std::string& to);
  void appendTags(const IKRPerson& person, std::string& to);
  void appendEntries(KROrdinal property, const IKRPerson& person, std::string& to);
  void appendEntry(KROrdinal property, const KREntryView* entry, bool isMain, std::string& to);

  Options options_;
  std::array<bool, kKROrdinalCount> singles_{};
  std::array<Width, kKROrdinalCount> widths_{};
  bool hasMiddleName_ = false;
  size_t tags_ = 0;
  /// A tag that cannot stand in a list: each gets a column of its own.
  bool hasOddTag_ = false;
  bool isRowBegun_ = false;
  KRHold hold_;
  size_t columnCount_ = 0;
};
