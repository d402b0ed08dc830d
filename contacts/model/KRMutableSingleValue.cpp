#include "contacts/model/KRMutableSingleValue.h"

#include "contacts/model/KRDecoding.h"
#include "contacts/model/KRDescribing.h"
#include "platform/KRHash.h"
#include "platform/KRKeyedArchiver.h"

bool KRMutableSingleValue::isEqual(const KRObject* other) const {
  const auto* single = dynamic_cast<const KRMutableSingleValue*>(other);
  return single != nullptr && single->type_ == type_ && krEqualObjects(single->label_.get(), label_.get()) &&
         single->value_.isEqual(value_);
}

uint64_t KRMutableSingleValue::hash() const {
  return krHashMix(krHashMix(label_ ? label_->hash() : 0, value_.hash()), static_cast<uint64_t>(type_));
}

KRString KRMutableSingleValue::description() const {
  std::string text = "{label = ";
  krAppendQuoted(text, label_ ? label_->name() : KRString());
  text.append(", type = ").append(std::to_string(type_)).append(", value = ").append(value_.description().view());
  return KRString::trusted(text + "}");
}

KRText KRMutableSingleValue::archiveClassName() const {
  return "KRMutableSingleValue";
}

void KRMutableSingleValue::encodeWithCoder(KRKeyedArchiver& coder) const {
  coder.encode(label_, "label");
  coder.encode(value_, "value");
  coder.encodeInteger(type_, "type");
}

KRRef<KRObject> KRMutableSingleValue::decode(KRKeyedUnarchiver& coder) {
  auto single = krMake<KRMutableSingleValue>();
  single->setLabel(krDecodeObject<KRLabel>(coder, "label"));
  single->setValue(coder.decode("value"));
  const int64_t type = coder.decodeInteger("type").value_or(0);
  if (type != static_cast<int32_t>(type)) coder.fail();
  single->setType(static_cast<int32_t>(type));
  return single;
}
