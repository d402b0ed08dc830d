#include "contacts/model/KRObjectEmail.h"

#include "contacts/model/KRDecoding.h"
#include "platform/KRKeyedArchiver.h"

bool KRObjectEmail::isEqual(const KRObject* other) const {
  const auto* same = dynamic_cast<const KRObjectEmail*>(other);
  return same != nullptr && same->email_ == email_;
}

uint64_t KRObjectEmail::hash() const {
  return email_.hash();
}

KRString KRObjectEmail::description() const {
  return email_.isNothing() ? "(null)"_kr : email_;
}

KRText KRObjectEmail::archiveClassName() const {
  return "KRObjectEmail";
}

void KRObjectEmail::encodeWithCoder(KRKeyedArchiver& coder) const {
  coder.encode(email_, "email");
}

KRRef<KRObject> KRObjectEmail::decode(KRKeyedUnarchiver& coder) {
  return krMake<KRObjectEmail>(krDecodeText(coder, "email"));
}
