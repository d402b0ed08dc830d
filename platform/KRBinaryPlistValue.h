#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string_view>

// What a binary property list consists of; parts of `KRBinaryPlist`, which is what callers use.

/// What a file begins with.
inline constexpr std::string_view kKRBinaryPlistMagic = "bplist00";
/// Bytes at its end, which say where the table of offsets stands.
inline constexpr size_t kKRBinaryPlistTrailerSize = 32;

enum class KRBinaryPlistKind : uint8_t {
  Null,
  Truth,
  Integer,
  /// An integer above the largest `int64_t`.
  Unsigned,
  Real,
  /// Seconds since 2001-01-01 00:00:00 UTC.
  Instant,
  Data,
  Text,
  Uid,
  Array,
  Dictionary,
};

/// One value. Sixteen bytes.
struct KRBinaryPlistValue {
  /// Where the bytes of a text or of data stand, or the links of a container.
  enum Home : uint8_t {
    /// In the bytes that the list was read from.
    Source,
    /// There too, but as UTF-16; `size` counts its units.
    Wide,
    /// In the list's own tables.
    Own,
  };

  /// The number itself, or where bytes or links begin.
  uint64_t bits = 0;
  /// Bytes of a text or of data, elements of an array, pairs of a dictionary (its keys, then its values).
  uint64_t size : 48 = 0;
  uint64_t kind : 8 = 0;
  uint64_t home : 8 = Source;

  bool is(KRBinaryPlistKind sought) const noexcept { return kind == static_cast<uint8_t>(sought); }
  bool hasBytes() const noexcept { return is(KRBinaryPlistKind::Data) || is(KRBinaryPlistKind::Text); }
  bool isContainer() const noexcept { return is(KRBinaryPlistKind::Array) || is(KRBinaryPlistKind::Dictionary); }
  /// How many values it names.
  size_t linkCount() const noexcept {
    return is(KRBinaryPlistKind::Array) ? size : is(KRBinaryPlistKind::Dictionary) ? size * 2 : 0;
  }
};

/// A number of 1 to 8 bytes as the format has them, the highest first.
inline uint64_t krBigEndian(const char* from, unsigned size) noexcept {
  uint64_t number = 0;
  if (size == 4) {
    uint32_t word;
    std::memcpy(&word, from, sizeof word);
    return std::endian::native == std::endian::little ? __builtin_bswap32(word) : word;
  }
  for (unsigned i = 0; i < size; ++i) number = (number << 8U) | static_cast<unsigned char>(from[i]);
  return number;
}

/// The values that a container names, in their order, looked at where they stand: in the bytes that a list was read
/// from, or in the list's own table. A view, valid until a value is added to the list.
class KRBinaryPlistLinks {
 public:
  using Node = uint32_t;
  class Iterator;

  KRBinaryPlistLinks() noexcept = default;
  explicit KRBinaryPlistLinks(const Node* first, size_t count) noexcept
      : first_(reinterpret_cast<const char*>(first)), count_(count) {}
  /// References of `width` bytes.
  KRBinaryPlistLinks(const char* first, unsigned width, size_t count) noexcept
      : first_(first), count_(count), width_(width) {}

  size_t size() const noexcept { return count_; }
  bool empty() const noexcept { return count_ == 0; }
  Node operator[](size_t index) const noexcept { return static_cast<Node>(number(index)); }
  /// Whether every link names a place below `count`. Others are not to be looked at.
  bool areBelow(uint64_t count) const noexcept {
    for (size_t i = 0; i < count_; ++i) {
      if (number(i) >= count) return false;
    }
    return true;
  }
  /// `count` links from the one at `first` on.
  KRBinaryPlistLinks part(size_t first, size_t count) const noexcept {
    return {first_ + first * (width_ != 0 ? width_ : sizeof(Node)), width_, count};
  }

  Iterator begin() const noexcept;
  Iterator end() const noexcept;

 private:
  /// In a file a link may have more bytes than a place here.
  uint64_t number(size_t index) const noexcept {
    if (width_ != 0) return krBigEndian(first_ + index * width_, width_);
    Node node;
    std::memcpy(&node, first_ + index * sizeof node, sizeof node);
    return node;
  }

  const char* first_ = nullptr;
  size_t count_ = 0;
  /// 0 for links as memory has them.
  unsigned width_ = 0;
};

class KRBinaryPlistLinks::Iterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = Node;
  using difference_type = std::ptrdiff_t;
  using pointer = const Node*;
  using reference = Node;

  Iterator(const KRBinaryPlistLinks& links, size_t index) noexcept : links_(links), index_(index) {}
  Node operator*() const noexcept { return links_[index_]; }
  Iterator& operator++() noexcept {
    ++index_;
    return *this;
  }
  Iterator operator++(int) noexcept {
    const Iterator before = *this;
    ++index_;
    return before;
  }
  friend bool operator==(const Iterator& a, const Iterator& b) noexcept { return a.index_ == b.index_; }

 private:
  KRBinaryPlistLinks links_;
  size_t index_ = 0;
};

inline KRBinaryPlistLinks::Iterator KRBinaryPlistLinks::begin() const noexcept {
  return {*this, 0};
}
inline KRBinaryPlistLinks::Iterator KRBinaryPlistLinks::end() const noexcept {
  return {*this, count_};
}
