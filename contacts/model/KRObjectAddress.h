#pragma once

#include <array>
#include <vector>

#include "contacts/model/KRAddressField.h"
#include "platform/KRObject.h"
#include "platform/KRString.h"

class KRKeyedUnarchiver;

/// A postal address of named fields, with the code of its country. Fields that hold nothing are absent; an empty field
/// counts as absent too. Two addresses are equal when the country codes and all fields are, exactly.
class KRObjectAddress : public KRObject {
 public:
  struct Field {
    KRString name;
    KRString value;
    friend bool operator==(const Field&, const Field&) = default;
  };

  KRObjectAddress() = default;

  /// ISO 3166-1 alpha-2 code as given, or nothing.
  KRString countryCode() const { return countryCode_; }
  void setCountryCode(KRString countryCode) { countryCode_ = std::move(countryCode); }

  /// Sets one field; nothing or "" removes it (written form: `setStringValue:forFieldName:`). Names beyond the standard
  /// ones are kept too.
  void setStringValue(const KRString& value, const KRString& forFieldName);
  /// The field's text, or nothing.
  KRString stringValue(KRText forFieldName) const;

  /// The standard fields by place (nothing where absent) and the others in the order of their names.
  const std::array<KRString, kKRAddressFieldCount>& standardFields() const { return standard_; }
  const std::vector<Field>& furtherFields() const { return further_; }

  /// Written form: `isequalToAddress:`. False for nothing.
  bool isequalToAddress(const KRObjectAddress* address) const;

  bool isEqual(const KRObject* other) const override;
  uint64_t hash() const override;
  /// Code and fields; different for different addresses.
  KRString description() const override;
  KRText archiveClassName() const override;
  void encodeWithCoder(KRKeyedArchiver& coder) const override;
  static KRRef<KRObject> decode(KRKeyedUnarchiver& coder);

 private:
  KRString countryCode_;
  std::array<KRString, kKRAddressFieldCount> standard_;
  std::vector<Field> further_;
};
