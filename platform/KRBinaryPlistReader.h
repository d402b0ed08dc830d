#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "platform/KRBinaryPlist.h"

/// Reads one binary property list into a table; a part of `KRBinaryPlist`, which is what callers use.
///
/// Each object of the file is looked at once, in the order of the offset table, and becomes the value at the same place
/// in the table. Objects of one file never overlap, so together they are no longer than the part of the file that
/// holds them: a file that claims more is damaged, and can therefore not make the table larger than its size allows.
class KRBinaryPlistReader {
 public:
  explicit KRBinaryPlistReader(std::string_view bytes) : bytes_(bytes) {}

  /// The list, or nothing. To be called once.
  std::optional<KRBinaryPlist> read();

 private:
  bool readTrailer();
  bool readObject(uint64_t offset);
  bool readSimple(unsigned info);
  bool readInteger(uint64_t offset, unsigned info);
  bool readReal(uint64_t offset, unsigned info);
  bool readUid(uint64_t offset, unsigned info);
  bool readAscii(uint64_t offset, uint64_t count);
  bool readUtf16(uint64_t offset, uint64_t count);
  bool readLinks(KRBinaryPlist::Kind kind, uint64_t offset, uint64_t count, uint64_t linksOfOne);
  bool readCount(uint64_t& offset, unsigned info, uint64_t& count);
  bool checkKeys() const;
  bool checkCycles() const;

  /// Whether `count` pieces of `size` bytes stand at `offset` in front of the offset table.
  bool fits(uint64_t offset, uint64_t count, uint64_t size) const;
  /// A big-endian number of 1 to 8 bytes.
  uint64_t number(uint64_t offset, unsigned size) const;

  std::string_view bytes_;
  KRBinaryPlist list_;
  unsigned offsetSize_ = 0;
  unsigned referenceSize_ = 0;
  uint64_t objectCount_ = 0;
  uint64_t root_ = 0;
  /// Where the offset table begins and the objects end.
  uint64_t tableOffset_ = 0;
  /// Bytes of objects that may still be read.
  uint64_t unread_ = 0;
};
