#pragma once

#include <optional>
#include <string_view>

#include "platform/KRBinaryPlistValue.h"

/// The bytes of a binary property list, looked at value by value; a part of `KRBinaryPlist`, which is what callers use.
///
/// Nothing is kept of what was looked at: each answer is read from the offset table and from the value's own bytes, so
/// that a file of gigabytes needs no memory beside them. Every offset and every size is checked, every time. What
/// values name, and what stands in texts, is the reader's to check.
class KRBinaryPlistSource {
 public:
  using Kind = KRBinaryPlistKind;
  using Value = KRBinaryPlistValue;

  /// A value, and how many bytes of the file it takes: 0 for a damaged one.
  struct Found {
    Value value;
    uint64_t size = 0;
  };

  /// No values.
  KRBinaryPlistSource() = default;
  /// The bytes are the caller's to keep. Nothing when the trailer speaks of what cannot be.
  static std::optional<KRBinaryPlistSource> open(std::string_view bytes);

  std::string_view bytes() const noexcept { return bytes_; }
  /// Values stand at the places below it.
  uint64_t count() const noexcept { return count_; }
  uint64_t root() const noexcept { return root_; }
  /// How many bytes all values together may take, which never overlap.
  uint64_t room() const noexcept;

  /// The value at a place.
  Found find(uint64_t place) const noexcept;
  /// What a container names.
  KRBinaryPlistLinks links(const Value& container) const noexcept;

 private:
  bool readSimple(unsigned info, Value& value) const noexcept;
  bool readInteger(uint64_t& at, unsigned info, Value& value) const noexcept;
  bool readReal(uint64_t& at, unsigned marker, Value& value) const noexcept;
  bool readUid(uint64_t& at, unsigned info, Value& value) const noexcept;
  /// What has a count and so many times `width` bytes.
  bool readSized(uint64_t& at, unsigned info, Kind kind, unsigned width, Value& value) const noexcept;
  bool readCount(uint64_t& at, unsigned info, uint64_t& count) const noexcept;

  /// Whether `count` pieces of `size` bytes stand at `offset` in front of the offset table.
  bool fits(uint64_t offset, uint64_t count, uint64_t size) const noexcept;
  uint64_t number(uint64_t offset, unsigned size) const noexcept { return krBigEndian(bytes_.data() + offset, size); }

  std::string_view bytes_;
  uint64_t count_ = 0;
  uint64_t root_ = 0;
  /// Where the offset table begins and the values end.
  uint64_t tableOffset_ = 0;
  unsigned offsetSize_ = 0;
  unsigned referenceSize_ = 0;
};
