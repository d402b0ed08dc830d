#include "contacts/model/KRReading.h"

#include <algorithm>

namespace {

/// An empty field counts as absent.
bool sameField(KRText a, KRText b) {
  return a.view() == b.view();
}

const std::vector<KRObjectAddress::Field>& furtherOf(const KRAddressView& address) {
  static const auto* const none = new std::vector<KRObjectAddress::Field>;
  return address.further != nullptr ? *address.further : *none;
}

}  // namespace

bool operator==(const KRAddressView& a, const KRAddressView& b) {
  return a.countryCode == b.countryCode && std::equal(a.fields.begin(), a.fields.end(), b.fields.begin(), sameField) &&
         furtherOf(a) == furtherOf(b);
}
