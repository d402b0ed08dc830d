#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/KRSlab.h"
#include "platform/KRText.h"

/// Immutable text, cheap to copy, that may be nothing. Sixteen bytes.
///
/// *Nothing* differs from the empty text. The bytes are UTF-8 and always well-formed: what is not, becomes U+FFFD when
/// a string is made of it. `length()` counts UTF-16 code units, because lengths are defined on them.
///
/// A string is a slice of a counted block (`KRSlab`), or a literal (`"text"_kr`), which needs no memory and no order of
/// initialisation. Safe to read and copy from any thread; assigning to one `KRString` variable is not protected.
class KRString {
 public:
  constexpr KRString() noexcept : literal_(nullptr) {}
  constexpr KRString(std::nullptr_t) noexcept : literal_(nullptr) {}

  /// Copies the text; ill-formed UTF-8 becomes U+FFFD. A null view is the empty text.
  explicit KRString(std::string_view text);
  explicit KRString(const char* text) : KRString(std::string_view(text)) {}
  explicit KRString(const std::string& text) : KRString(std::string_view(text)) {}
  /// Copies the text; nothing stays nothing. The text is known to be well-formed.
  explicit KRString(KRText text);

  constexpr KRString(const KRString& other) noexcept : literal_(nullptr) { copy(other); }
  constexpr KRString(KRString&& other) noexcept : literal_(nullptr) { swap(other); }
  constexpr KRString& operator=(KRString other) noexcept {
    swap(other);
    return *this;
  }
  constexpr ~KRString() {
    if (offset_ != kLiteral) slab_->release();
  }

  /// Text known to live as long as the process; `"text"_kr` is the usual spelling.
  static constexpr KRString literal(const char* text, size_t size) noexcept {
    KRString string;
    string.literal_ = text;
    string.size_ = static_cast<uint32_t>(size);
    return string;
  }

  /// A slice of a block; adds a reference to it. The bytes are known to be well-formed UTF-8.
  static KRString slice(KRSlab* slab, uint32_t offset, uint32_t size) noexcept;

  /// Copies bytes known to be well-formed UTF-8, without looking at them.
  static KRString trusted(std::string_view text);

  /// The pieces joined into one new text, "" for none; a nothing among them adds nothing. Throws `std::bad_alloc` where
  /// there is no memory, and for a text of 4 GiB or more.
  static KRString joined(std::span<const KRText> pieces);

  constexpr bool isNothing() const noexcept { return offset_ == kLiteral && literal_ == nullptr; }
  /// Nothing, or zero length.
  constexpr bool isEmpty() const noexcept { return size_ == 0; }

  constexpr KRText text() const noexcept { return isNothing() ? KRText() : KRText(bytes(), size_); }
  constexpr operator KRText() const noexcept { return text(); }
  constexpr std::string_view view() const noexcept { return text().view(); }
  /// Count of UTF-8 bytes.
  constexpr size_t size() const noexcept { return size_; }
  /// Count of UTF-16 code units. Linear in the text.
  size_t length() const noexcept { return text().length(); }
  uint64_t hash() const noexcept { return text().hash(); }

  /// Regular equality: nothing equals nothing, and nothing else. The contract's comparison is `sameText`.
  friend constexpr bool operator==(const KRString& a, const KRString& b) noexcept { return a.text() == b.text(); }
  friend constexpr bool operator==(const KRString& a, KRText b) noexcept { return a.text() == b; }
  friend constexpr bool operator==(const KRString& a, const char* b) noexcept { return a.text() == KRText(b); }

 private:
  /// An offset that no slice has: it marks literals, and with a null pointer nothing.
  static constexpr uint32_t kLiteral = 0xFFFFFFFFU;

  constexpr const char* bytes() const noexcept { return offset_ == kLiteral ? literal_ : slab_->bytes() + offset_; }
  constexpr void copy(const KRString& other) noexcept {
    if (other.offset_ == kLiteral) {
      literal_ = other.literal_;
    } else {
      slab_ = other.slab_;
      slab_->retain();
    }
    offset_ = other.offset_;
    size_ = other.size_;
  }
  constexpr void swap(KRString& other) noexcept {
    const bool mine = offset_ == kLiteral;
    const bool theirs = other.offset_ == kLiteral;
    const char* literal = mine ? literal_ : nullptr;
    KRSlab* slab = mine ? nullptr : slab_;
    if (theirs) {
      literal_ = other.literal_;
    } else {
      slab_ = other.slab_;
    }
    if (mine) {
      other.literal_ = literal;
    } else {
      other.slab_ = slab;
    }
    std::swap(offset_, other.offset_);
    std::swap(size_, other.size_);
  }

  union {
    const char* literal_;
    KRSlab* slab_;
  };
  uint32_t offset_ = kLiteral;
  uint32_t size_ = 0;
};

/// A literal as text: `constexpr KRString name = "phone"_kr;`.
constexpr KRString operator""_kr(const char* text, size_t size) noexcept {
  return KRString::literal(text, size);
}

/// A list of texts that is changed in place, such as the tags of a person.
using KRStringList = std::vector<KRString>;

/// `KRString::joined`, of pieces that are written down.
KRString krConcat(std::initializer_list<KRText> pieces);

/// `format` with its first `%@` replaced by `argument`; an absent argument is written "(null)".
KRString krFormat(KRText format, KRText argument);

/// The bytes with every ill-formed sequence replaced by U+FFFD, one for each maximal part of a sequence, as the Unicode
/// standard recommends.
std::string krWellFormed(std::string_view bytes);
bool krIsWellFormed(std::string_view bytes) noexcept;

struct KRTextHash {
  using is_transparent = void;
  size_t operator()(KRText text) const noexcept { return text.hash(); }
};
struct KRTextEqual {
  using is_transparent = void;
  bool operator()(KRText a, KRText b) const noexcept { return a == b; }
};

template <>
struct std::hash<KRString> {
  size_t operator()(const KRString& text) const noexcept { return text.hash(); }
};
