#include "contacts/model/KRObjectAddress.h"

#include <algorithm>

#include "contacts/model/KRDecoding.h"
#include "contacts/model/KRDescribing.h"
#include "platform/KRHash.h"
#include "platform/KRKeyedArchiver.h"

namespace {

/// The place of a standard field's name, or the count of them.
size_t standardPlace(KRText name) {
  const auto found = std::find_if(kKRAddressFieldNames.begin(), kKRAddressFieldNames.end(),
                                  [&](const KRString& each) { return each == name; });
  return static_cast<size_t>(found - kKRAddressFieldNames.begin());
}

bool isBefore(const KRObjectAddress::Field& field, KRText name) {
  return field.name.view() < name.view();
}

}  // namespace

void KRObjectAddress::setStringValue(const KRString& value, const KRString& forFieldName) {
  if (forFieldName.isNothing()) return;
  const KRString kept = value.isEmpty() ? KRString() : value;
  const size_t place = standardPlace(forFieldName);
  if (place < kKRAddressFieldCount) {
    standard_[place] = kept;
    return;
  }
  const auto at = std::lower_bound(further_.begin(), further_.end(), forFieldName.text(), isBefore);
  const bool isThere = at != further_.end() && at->name == forFieldName;
  if (kept.isNothing()) {
    if (isThere) further_.erase(at);
  } else if (isThere) {
    at->value = kept;
  } else {
    further_.insert(at, {forFieldName, kept});
  }
}

KRString KRObjectAddress::stringValue(KRText forFieldName) const {
  const size_t place = standardPlace(forFieldName);
  if (place < kKRAddressFieldCount) return standard_[place];
  const auto at = std::lower_bound(further_.begin(), further_.end(), forFieldName, isBefore);
  return at != further_.end() && at->name == forFieldName ? at->value : KRString();
}

bool KRObjectAddress::isequalToAddress(const KRObjectAddress* address) const {
  return address != nullptr && address->countryCode_ == countryCode_ && address->standard_ == standard_ &&
         address->further_ == further_;
}

bool KRObjectAddress::isEqual(const KRObject* other) const {
  return isequalToAddress(dynamic_cast<const KRObjectAddress*>(other));
}

uint64_t KRObjectAddress::hash() const {
  uint64_t running = countryCode_.hash();
  for (const KRString& field : standard_) running = krHashMix(running, field.hash());
  for (const Field& field : further_) running = krHashMix(krHashMix(running, field.name.hash()), field.value.hash());
  return running;
}

KRString KRObjectAddress::description() const {
  std::string text = "{code = ";
  krAppendQuoted(text, countryCode_);
  for (size_t place = 0; place < kKRAddressFieldCount; ++place) {
    if (standard_[place].isNothing()) continue;
    text.append(", ").append(kKRAddressFieldNames[place].view()).append(" = ");
    krAppendQuoted(text, standard_[place]);
  }
  for (const Field& field : further_) {
    // A quoted name: a further field may bear any name, and is told from the standard ones by its quotes.
    text += ", ";
    krAppendQuoted(text, field.name);
    text += " = ";
    krAppendQuoted(text, field.value);
  }
  return KRString::trusted(text + "}");
}

KRText KRObjectAddress::archiveClassName() const {
  return "KRObjectAddress";
}

void KRObjectAddress::encodeWithCoder(KRKeyedArchiver& coder) const {
  auto fields = krMake<KRValueMap>();
  for (size_t place = 0; place < kKRAddressFieldCount; ++place) {
    if (!standard_[place].isNothing()) fields->set(kKRAddressFieldNames[place], standard_[place]);
  }
  for (const Field& field : further_) fields->set(field.name, field.value);
  coder.encode(countryCode_, "countryCode");
  coder.encode(fields, "fields");
}

KRRef<KRObject> KRObjectAddress::decode(KRKeyedUnarchiver& coder) {
  auto address = krMake<KRObjectAddress>();
  address->setCountryCode(krDecodeText(coder, "countryCode"));
  if (const auto fields = krDecodeObject<KRValueMap>(coder, "fields")) {
    for (const KRValueMap::Entry& entry : fields->entries()) {
      if (entry.value.asText() == nullptr) coder.fail();
      address->setStringValue(entry.value.text(), entry.key);
    }
  }
  return address;
}
