#include "app/PersonDocument.h"

#include "contacts/model/ABPerson.h"
#include "contacts/model/KRAddressField.h"
#include "contacts/model/KRInstantMessageServer.h"
#include "contacts/model/KRObjectAddress.h"
#include "contacts/model/KRObjectInstantMessage.h"
#include "contacts/model/KRObjectPersonName.h"
#include "platform/KRDigest.h"

namespace {

using Layout = JsonWriter::Layout;

using PersonDocument::writeValue;

void writeName(JsonWriter& json, const KRObjectPersonName& name) {
  json.beginObject();
  json.key("first");
  json.textOrNull(name.first());
  json.key("middle");
  json.textOrNull(name.middle());
  json.key("last");
  json.textOrNull(name.last());
  json.endObject();
}

void writeAddress(JsonWriter& json, const KRObjectAddress& address) {
  json.beginObject();
  json.key("countryCode");
  json.textOrNull(address.countryCode());
  json.key("fields");
  json.beginObject();
  for (size_t i = 0; i < kKRAddressFieldCount; ++i) {
    const KRString& field = address.standardFields()[i];
    if (field.isNothing()) continue;
    json.key(kKRAddressFieldNames[i].view());
    json.text(field.view());
  }
  for (const KRObjectAddress::Field& field : address.furtherFields()) {
    json.key(field.name.view());
    json.text(field.value.view());
  }
  json.endObject();
  json.endObject();
}

void writeAccount(JsonWriter& json, const KRObjectInstantMessage& account) {
  json.beginObject();
  json.key("server");
  json.textOrNull(account.server() == nullptr ? KRString() : account.server()->name());
  json.key("userName");
  json.textOrNull(account.userName());
  json.endObject();
}

void writeData(JsonWriter& json, const KRData& data) {
  json.beginObject();
  json.key("bytes");
  json.whole(data.bytes().size());
  json.key("md5");
  json.textOrNull(KRDigest::md5(&data));
  json.endObject();
}

void writeList(JsonWriter& json, const KRValueList& list) {
  json.beginArray();
  for (const KRValue& value : list.values()) writeValue(json, value);
  json.endArray();
}

void writeObject(JsonWriter& json, const KRValue& value) {
  if (const auto* phone = value.as<KRObjectPhone>()) {
    json.textOrNull(phone->phoneNumber());
  } else if (const auto* email = value.as<KRObjectEmail>()) {
    json.textOrNull(email->email());
  } else if (const auto* name = value.as<KRObjectPersonName>()) {
    writeName(json, *name);
  } else if (const auto* address = value.as<KRObjectAddress>()) {
    writeAddress(json, *address);
  } else if (const auto* account = value.as<KRObjectInstantMessage>()) {
    writeAccount(json, *account);
  } else if (const auto* data = value.as<KRData>()) {
    writeData(json, *data);
  } else if (const auto* list = value.as<KRValueList>()) {
    writeList(json, *list);
  } else {
    json.text(value.description().view());
  }
}

void writeEntry(JsonWriter& json, const KRMutableSingleValue& entry) {
  const KRRef<KRLabel> label = entry.label();
  json.beginObject();
  json.key("label");
  json.textOrNull(label ? label->name() : KRString());
  json.key("type");
  json.whole(static_cast<int64_t>(entry.type()));
  json.key("value");
  writeValue(json, entry.value());
  json.endObject();
}

void writeStored(JsonWriter& json, const KRStoredValue& stored) {
  if (const auto* multiple = dynamic_cast<const KRMutableMultipleValue*>(&stored)) {
    json.beginArray();
    for (size_t i = 0; i < multiple->count(); ++i) writeEntry(json, *multiple->valueAtIndex(i));
    json.endArray();
  } else if (const auto* single = dynamic_cast<const KRMutableSingleValue*>(&stored)) {
    writeEntry(json, *single);
  } else {
    json.null();
  }
}

/// A contact of the same values. A record keeps each value that it was asked for, so another one of the same card is
/// asked and thrown away.
KRRef<const IKRPerson> forReading(const IKRPerson& person) {
  const auto* record = dynamic_cast<const ABPerson*>(&person);
  if (record == nullptr || record->isChanged() || record->card().empty()) return KRRef<const IKRPerson>(&person);
  return krMake<ABPerson>(record->record());
}

}  // namespace

void PersonDocument::writeBook(JsonWriter& json, KRAddressBook& book) {
  json.key("addressBook");
  json.beginObject(Layout::OneLine);
  json.key("id");
  json.textOrNull(book.ID());
  json.key("name");
  json.textOrNull(book.name());
  json.key("personCount");
  json.whole(book.allPersonsCount());
  json.endObject();
}

void PersonDocument::write(JsonWriter& json, const IKRPerson& person, size_t index) {
  json.beginObject(Layout::OneLine);
  json.key("index");
  json.whole(index);
  json.key("id");
  json.textOrNull(person.ID());
  json.key("isOrganization");
  json.truth(person.isOrganization());
  json.key("displayName");
  json.textOrNull(person.displayName());
  json.key("showName");
  json.textOrNull(person.showName());
  json.key("companyName");
  json.textOrNull(person.companyName());
  json.key("jobTitle");
  json.textOrNull(person.jobTitle());
  json.key("values");
  json.beginObject();
  const KRRef<const IKRPerson> reading = forReading(person);
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    const KRRef<KRStoredValue> stored = reading->valueByPropertyName(property->name());
    if (!stored) continue;
    json.key(property->name().view());
    writeStored(json, *stored);
  }
  json.endObject();
  json.endObject();
}

void PersonDocument::writeValue(JsonWriter& json, const KRValue& value) {
  if (value.isNothing()) {
    json.null();
  } else if (value.object() != nullptr) {
    writeObject(json, value);
  } else if (const bool* truth = value.asTruth()) {
    json.truth(*truth);
  } else if (const int64_t* whole = value.asWhole()) {
    json.whole(*whole);
  } else if (const double* number = value.asNumber()) {
    json.number(*number);
  } else {
    // Text, or a date in its text form.
    json.text(value.asText() != nullptr ? value.asText()->view() : value.description().view());
  }
}
