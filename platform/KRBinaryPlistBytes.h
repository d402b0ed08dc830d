#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "platform/KRBuffer.h"
#include "platform/KRNumberList.h"
#include "platform/KRText.h"

/// The binary form of a property list while it is written: each value is added as the bytes that it has in the file,
/// behind those before it, and from then on is known by its number. Nothing else is kept of it but four bytes that say
/// where it stands, so that a list may be much larger than one in memory (`KRBinaryPlist`).
///
/// What contains values comes after them, and the root last. Values that are equal are written as often as they are
/// added; who wants them once looks at what was written (`from`) and takes the last one back.
///
/// Every `add` throws `std::bad_alloc` where there is no memory, and where there are as many values as references of
/// the size can name (256, 65,536, or 4,294,967,295); then nothing was added. One thread at a time.
class KRBinaryPlistBytes {
 public:
  /// Which value it is, in the order in which they were added.
  using Number = uint32_t;
  static constexpr Number kNone = 0xFFFFFFFFU;

  /// `referenceSize` is how many bytes a container takes to name a value: 1, 2 or 4.
  explicit KRBinaryPlistBytes(unsigned referenceSize);

  /// The smallest size of references that so many values can be named with.
  static unsigned referenceSizeFor(size_t count) noexcept;

  Number addNull();
  Number addTruth(bool value);
  Number addInteger(int64_t value);
  /// An integer, also above the largest `int64_t`.
  Number addUnsigned(uint64_t value);
  Number addReal(double value);
  Number addInstant(double secondsSince2001);
  Number addUid(uint64_t value);
  /// A text of ASCII takes a byte for each character, any other two for each UTF-16 code unit.
  Number addText(KRText text);
  Number addData(std::string_view bytes);
  /// The elements were added before.
  Number addArray(std::span<const Number> elements);
  /// As many keys as values, all added before; the keys are texts, all different.
  Number addDictionary(std::span<const Number> keys, std::span<const Number> values);

  /// How many values were added.
  size_t count() const noexcept { return offsets_.count(); }
  /// The bytes of a value and of all behind it. The bytes say themselves where a value ends, so one that begins with
  /// the bytes of another is equal to it. Valid until a value is added.
  std::string_view from(Number number) const noexcept { return bytes_.view().substr(offset(number)); }
  /// Takes the value back that was added last; nothing contains it.
  void removeLast() noexcept;

  /// The whole file, with a value as its root. To be called once, at the end; throws `std::bad_alloc` as `add` does.
  KRBuffer finish(Number root);

 private:
  Number begin(size_t most);
  uint64_t offset(size_t number) const noexcept;
  char* end() noexcept { return bytes_.data() + bytes_.size(); }
  void setEnd(const char* end) noexcept { bytes_.setSize(static_cast<size_t>(end - bytes_.data())); }
  /// Writes into the room that `begin` has made.
  void put(uint64_t value, unsigned size) noexcept;
  void putInteger(int64_t value) noexcept;
  void putMarker(unsigned type, uint64_t count) noexcept;
  void putBytes(std::string_view bytes) noexcept;
  void putReferences(std::span<const Number> numbers) noexcept;
  void putTable(unsigned offsetSize) noexcept;
  Number addMarker(unsigned marker);
  Number addNumber(unsigned marker, uint64_t value, unsigned size);
  Number addWideText(KRText text);
  void reserve(size_t more);

  KRBuffer bytes_;
  /// Where each value begins, without what exceeds 32 bits: they only grow, so it is enough to know (`wraps_`) at which
  /// values that becomes one more.
  KRNumberList offsets_;
  std::vector<Number> wraps_;
  unsigned referenceSize_;
};
