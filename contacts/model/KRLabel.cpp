#include "contacts/model/KRLabel.h"

#include "platform/KRKeyedArchiver.h"
#include "platform/KRKeyedUnarchiver.h"

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
  label->setName(coder.decode("name").text());
  label->setDisplayName(coder.decode("displayName").text());
  return label;
}
