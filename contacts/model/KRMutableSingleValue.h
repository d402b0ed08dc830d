#pragma once

#include "contacts/model/KRLabel.h"
#include "contacts/model/KRStoredValue.h"
#include "platform/KRValue.h"

class KRKeyedUnarchiver;

/// One value with its label and type code. Equal to a single value of equal label, value and type.
///
/// A value object inside it is shared, not copied; it is changed by setting another one.
class KRMutableSingleValue : public KRStoredValue {
 public:
  KRMutableSingleValue() = default;
  KRMutableSingleValue(KRValue value, KRRef<KRLabel> label, int32_t type)
      : value_(std::move(value)), label_(std::move(label)), type_(type) {}

  /// The value object: text, date, list, data or one of the `KRObject...` classes; nothing until set.
  const KRValue& value() const { return value_; }
  void setValue(KRValue value) { value_ = std::move(value); }
  /// Nothing until set.
  KRRef<KRLabel> label() const { return label_; }
  void setLabel(KRRef<KRLabel> label) { label_ = std::move(label); }
  int32_t type() const override { return type_; }
  void setType(int32_t type) { type_ = type; }

  bool isEqual(const KRObject* other) const override;
  uint64_t hash() const override;
  KRString description() const override;
  KRText archiveClassName() const override;
  void encodeWithCoder(KRKeyedArchiver& coder) const override;
  static KRRef<KRObject> decode(KRKeyedUnarchiver& coder);

 private:
  KRValue value_;
  KRRef<KRLabel> label_;
  int32_t type_ = 0;
};
