#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "platform/KRBinaryPlist.h"

/// Reads one binary property list; a part of `KRBinaryPlist`, which is what callers use.
///
/// Each value of the file is looked at once, in the order of the offset table, and stays where it stands; only texts in
/// UTF-16 are kept, as UTF-8. Values of one file never overlap, so together they are no longer than the part of the
/// file that holds them: a file that claims more is damaged, and can therefore not make the list larger than its size
/// allows.
class KRBinaryPlistReader {
 public:
  explicit KRBinaryPlistReader(std::string_view bytes) : bytes_(bytes) {}

  /// The list, or nothing. To be called once.
  std::optional<KRBinaryPlist> read();

 private:
  using Node = KRBinaryPlist::Node;
  using Value = KRBinaryPlistValue;

  bool readValues();
  bool isGood(const Value& value) const;
  bool hasTextKeys(const Value& dictionary) const;
  void keepWide(Node node, const Value& text);
  bool checkCycles() const;

  const KRBinaryPlistSource& source() const { return list_.source_; }

  std::string_view bytes_;
  KRBinaryPlist list_;
};
