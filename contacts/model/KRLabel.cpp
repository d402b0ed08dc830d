#include "contacts/model/KRLabel.h"

#include "contacts/model/KRDecoding.h"
#include "platform/KRKeyedArchiver.h"

bool KRLabel::isEqual(const KRObject* other) const {
  const auto* label = dynamic_cast<const KRLabel*>(other);
  return label != nullptr && label->name_ == name_;
}

uint64_t KRLabel::hash() const {
  return name_.hash();
}

KRString KRLabel::description() const {
  return name_.isNothing() ? "(null)"_kr : name_;
}

KRText KRLabel::archiveClassName() const {
  return "KRLabel";
}

void KRLabel::encodeWithCoder(KRKeyedArchiver& coder) const {
  coder.encode(name_, "name");
  coder.encode(displayName_, "displayName");
}

KRRef<KRObject> KRLabel::decode(KRKeyedUnarchiver& coder) {
  auto label = krMake<KRLabel>();
  label->setName(krDecodeText(coder, "name"));
  label->setDisplayName(krDecodeText(coder, "displayName"));
  return label;
}
