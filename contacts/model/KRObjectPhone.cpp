#include "contacts/model/KRObjectPhone.h"

#include "contacts/model/KRDecoding.h"
#include "platform/KRKeyedArchiver.h"

bool KRObjectPhone::isEqual(const KRObject* other) const {
  const auto* same = dynamic_cast<const KRObjectPhone*>(other);
  return same != nullptr && same->phoneNumber_ == phoneNumber_;
}

uint64_t KRObjectPhone::hash() const {
  return phoneNumber_.hash();
}

KRString KRObjectPhone::description() const {
  return phoneNumber_.isNothing() ? "(null)"_kr : phoneNumber_;
}

KRText KRObjectPhone::archiveClassName() const {
  return "KRObjectPhone";
}

void KRObjectPhone::encodeWithCoder(KRKeyedArchiver& coder) const {
  coder.encode(phoneNumber_, "phoneNumber");
}

KRRef<KRObject> KRObjectPhone::decode(KRKeyedUnarchiver& coder) {
  return krMake<KRObjectPhone>(krDecodeText(coder, "phoneNumber"));
}
