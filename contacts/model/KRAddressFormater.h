#pragma once

#include <string>
#include <vector>

#include "contacts/model/KRAddressField.h"
#include "contacts/model/KRObjectAddress.h"
#include "contacts/model/KRReading.h"
#include "platform/KRObject.h"
#include "platform/KRString.h"

/// One field of postal addresses, as a descriptor. Descriptors live as long as the process and are compared by address.
class KRAddressFieldItem {
 public:
  explicit constexpr KRAddressFieldItem(KRAddressField field) : field_(field) {}

  constexpr KRAddressField field() const noexcept { return field_; }
  /// The field's name, as `KRObjectAddress` takes it.
  constexpr KRString name() const noexcept { return kKRAddressFieldNames[static_cast<size_t>(field_)]; }

 private:
  KRAddressField field_;
};

/// Postal addresses as text, and the order in which their fields are written.
class KRAddressFormater {
 public:
  /// Every standard field once, in the order in which addresses are written in the user's country (`KRCountry::local`):
  /// from the street to the country, from the country to the street, the postal code before or behind the city. The
  /// list lives as long as the process.
  static const std::vector<const KRAddressFieldItem*>& fieldArrayLocal();

  /// Written form: `initWithObject:`. Keeps the address; it may be nothing.
  explicit KRAddressFormater(const KRObjectAddress* address) : address_(address) {}

  /// The whole address as one line, "street: 1 Main Road, city: Exeter": every field that is there with its name, in
  /// one order that depends on nothing else, without line breaks or tabs. Two addresses give the same text exactly when
  /// all their fields are the same. The country code, which is not a field, is not part of it. "" without an address.
  KRString formatString() const;
  /// Writes the same line of an address that is still a view to the end of `to`.
  static void append(std::string& to, const KRAddressView& address);

 private:
  KRRef<const KRObjectAddress> address_;
};
