#pragma once

#include <cstdint>
#include <utility>
#include <variant>
#include <vector>

#include "platform/KRDate.h"
#include "platform/KRObject.h"
#include "platform/KRString.h"

class KRValueList;
class KRValueMap;
class KRData;

/// Any value: nothing, text, calendar date, truth, whole number, number, or a reference to a shared object such as a
/// list, a map, bytes or a value object of the contact model. It is the `value` of a stored value and the `info` of a
/// finding and of a handle. Copied like a value; a copied reference refers to the same object.
class KRValue {
 public:
  KRValue() noexcept = default;
  KRValue(std::nullptr_t) noexcept {}
  /// Nothing when the text is nothing.
  KRValue(KRString text) {
    if (!text.isNothing()) value_ = std::move(text);
  }
  KRValue(KRDate date) : value_(date) {}
  /// Nothing when the reference is.
  template <class T>
  KRValue(KRRef<T> object) {
    if (object) value_ = KRRef<KRObject>(std::move(object));
  }
  static KRValue truth(bool value) { return KRValue(Any(value)); }
  static KRValue whole(int64_t value) { return KRValue(Any(value)); }
  static KRValue number(double value) { return KRValue(Any(value)); }

  bool isNothing() const noexcept { return std::holds_alternative<std::monostate>(value_); }

  /// The text, or nothing when this is not text.
  KRString text() const;
  const KRString* asText() const noexcept { return std::get_if<KRString>(&value_); }
  const KRDate* asDate() const noexcept { return std::get_if<KRDate>(&value_); }
  const bool* asTruth() const noexcept { return std::get_if<bool>(&value_); }
  const int64_t* asWhole() const noexcept { return std::get_if<int64_t>(&value_); }
  const double* asNumber() const noexcept { return std::get_if<double>(&value_); }

  /// The object referred to, or nothing; borrowed, valid as long as this value.
  KRObject* object() const noexcept;
  /// The object when it is a `T`, else nothing: `value.as<KRObjectPhone>()`.
  template <class T>
  T* as() const noexcept {
    return dynamic_cast<T*>(object());
  }

  /// General equality: same kind and same content; objects decide by `isEqual`. Nothing equals nothing.
  bool isEqual(const KRValue& other) const;
  uint64_t hash() const;
  /// The text form; "(null)" for nothing. Equal values have equal text forms.
  KRString description() const;

 private:
  using Any = std::variant<std::monostate, KRString, KRDate, bool, int64_t, double, KRRef<KRObject>>;
  explicit KRValue(Any value) : value_(std::move(value)) {}

  Any value_;
};

/// An ordered list of values, shared. Equal to a list of equal values in the same order.
class KRValueList : public KRObject {
 public:
  KRValueList() = default;
  explicit KRValueList(std::vector<KRValue> values) : values_(std::move(values)) {}
  /// The texts as values, in their order.
  static KRRef<KRValueList> ofTexts(const KRStringList& texts);

  const std::vector<KRValue>& values() const noexcept { return values_; }
  std::vector<KRValue>& values() noexcept { return values_; }
  /// The texts among the values, in their order.
  KRStringList texts() const;

  bool isEqual(const KRObject* other) const override;
  uint64_t hash() const override;
  /// "(first, second)".
  KRString description() const override;

 private:
  std::vector<KRValue> values_;
};

/// A map from text to value that keeps the order in which its keys were set, shared. Equality ignores the order.
class KRValueMap : public KRObject {
 public:
  struct Entry {
    KRString key;
    KRValue value;
  };

  KRValueMap() = default;
  /// The entries in their order. Their keys are all different, which is not checked: so a large map is made in linear
  /// time.
  explicit KRValueMap(std::vector<Entry> entries) : entries_(std::move(entries)) {}

  const std::vector<Entry>& entries() const noexcept { return entries_; }
  /// The value under the key, or nothing. Linear: maps are small.
  const KRValue* find(KRText key) const noexcept;
  /// Replaces the value under the key in its place, or adds the key at the end.
  void set(KRString key, KRValue value);

  bool isEqual(const KRObject* other) const override;
  uint64_t hash() const override;
  /// "{key = value, ...}" in the order of the keys' text, so that equal maps read alike.
  KRString description() const override;

 private:
  std::vector<Entry> entries_;
};

/// Bytes, shared and immutable: images and archives. Equal to data of the same bytes.
class KRData : public KRObject {
 public:
  explicit KRData(std::string bytes) : bytes_(std::move(bytes)) {}
  explicit KRData(std::string_view bytes) : bytes_(bytes) {}
  explicit KRData(const char* bytes) : bytes_(bytes) {}

  std::string_view bytes() const noexcept { return bytes_; }

  bool isEqual(const KRObject* other) const override;
  uint64_t hash() const override;
  /// All bytes in hexadecimal, "<89504e47>", so that different data never read alike.
  KRString description() const override;

 private:
  std::string bytes_;
};
