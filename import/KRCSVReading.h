#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "contacts/KRTempPerson.h"
#include "import/KRCSVDialect.h"
#include "import/KRCSVMapping.h"
#include "import/KRCSVSplitter.h"
#include "import/KRCSVText.h"
#include "import/KRPersonLoadNote.h"
#include "platform/KRResult.h"

/// A delimited file opened in the dialect of RFC 4180: what separates its cells, whether it has headings, the mapping,
/// which the host may change, and then its persons. The text is in memory once; rows and persons are made one after the
/// other. One thread at a time; moved, never copied.
class KRCSVReading {
 public:
  /// How many headings are read, and how many bytes of them: no file that anybody made has more. The cells of further
  /// columns count as such without a heading.
  static constexpr size_t kMostColumns = size_t{1} << 18U;
  static constexpr size_t kLongestHeadings = size_t{16} << 20U;

  /// Receives a person with the number of its row, from 1, among those that hold something; answers false when no more
  /// are wanted. Does not throw.
  using PersonSink = std::function<bool(const KRRef<KRTempPerson>& person, size_t row)>;

  /// Opens the file; `preset` as for `KRCSVMapping::of`. The failure is one of the file system's.
  static KRResult<KRCSVReading> open(KRText path, const KRCSVDialect& dialect, KRText preset = {});
  /// The same for text that is at hand.
  static KRCSVReading of(KRCSVText text, const KRCSVDialect& dialect, KRText preset = {});

  /// The character set in which the file was read, its marks, and whether its first row names the columns: as the
  /// dialect says, else as found.
  const std::string& charset() const noexcept { return text_.charset(); }
  KRCSVMarks marks() const noexcept { return marks_; }
  bool hasHeadings() const noexcept { return hasHeadings_; }
  /// The first rows below the headings, at most 50.
  const std::vector<KRCSVMapping::Row>& firstRows() const noexcept { return firstRows_; }

  const KRCSVMapping& mapping() const noexcept { return mapping_; }
  /// To be changed before `persons` is called.
  KRCSVMapping& mapping() noexcept { return mapping_; }

  /// How many rows hold a person. Walks over the whole text on the first call.
  size_t personCount();
  /// Hands out the persons of all rows, in order, each behind the notes about it. A row in which every cell is blank is
  /// passed over.
  void persons(const PersonSink& sink, const KRPersonLoadNoteSink& notes);

 private:
  void findMarks();
  bool takeSeparatorLine();
  void readFirstRows();
  bool looksLikeHeadings() const;
  bool isPassedOver(const KRCSVRow& row) const { return row.isBlank() && !mapping_.isOwn(); }
  /// Splits everything below the headings.
  void split(const KRCSVSplitter::RowSink& sink, size_t* openQuoteLine = nullptr) const;

  KRCSVText text_;
  /// How much of the text stands before the first row: a line that names the separator.
  size_t start_ = 0;
  KRCSVDialect dialect_;
  KRCSVMarks marks_;
  bool hasHeadings_ = true;
  KRCSVMapping::Row headings_;
  std::vector<KRCSVMapping::Row> firstRows_;
  KRCSVMapping mapping_;
  size_t count_ = 0;
  bool isCounted_ = false;
  /// The line of a quote that nothing closes, or 0.
  size_t openQuoteLine_ = 0;
};
