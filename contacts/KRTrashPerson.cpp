#include "contacts/KRTrashPerson.h"

#include "contacts/model/KRDecoding.h"
#include "platform/KRKeyedArchiver.h"

namespace {

/// What the record interface shows under a key, as a value that can be set under it again; nothing when it shows
/// nothing. The picture, which it does not show, is its bytes.
KRValue shownValue(const IKRPerson& person, const KRString& key) {
  if (key == KRProPertyThumbnail) return person.imageData();
  const KRRecordValue shown = person.valueForProperty(key);
  if (shown.isNothing()) return {};
  const KRProperty* property = KRProperty::propertyWithName(key);
  if (property == nullptr) return KRString(shown.text());
  KRRef<KRStoredValue> stored = person.valueByProperty(property);
  if (property->isMultiple()) return stored;
  const auto* single = dynamic_cast<const KRMutableSingleValue*>(stored.get());
  return single != nullptr ? single->value() : KRValue();
}

}  // namespace

KRRef<KRTrashPerson> KRTrashPerson::initWithPerson(const IKRPerson* person, KRString fromID) {
  auto made = krMake<KRTrashPerson>();
  made->setFromID(std::move(fromID));
  if (person == nullptr) return made;
  if (const KRString ID = person->ID(); !ID.isNothing()) made->setID(ID);
  for (const KRString& key : properties()) {
    KRValue value = shownValue(*person, key);
    if (!value.isNothing()) made->setRecordValue(std::move(value), key);
  }
  return made;
}

KRText KRTrashPerson::archiveClassName() const {
  return "KRTrashPerson";
}

void KRTrashPerson::encodeWithCoder(KRKeyedArchiver& coder) const {
  for (const KRString& key : properties()) {
    const KRValue value = shownValue(*this, key);
    if (KRKeyedArchiver::canArchive(value)) coder.encode(value, key);
  }
  coder.encode(fromID(), "fromID");
  coder.encode(ID(), "ID");
}

KRRef<KRObject> KRTrashPerson::decode(KRKeyedUnarchiver& coder) {
  auto person = krMake<KRTrashPerson>();
  for (const KRString& key : properties()) {
    KRValue value = coder.decode(key);
    if (!value.isNothing()) person->setRecordValue(std::move(value), key);
  }
  person->setFromID(krDecodeText(coder, "fromID"));
  if (const KRString ID = krDecodeText(coder, "ID"); !ID.isNothing()) person->setID(ID);
  return person;
}
