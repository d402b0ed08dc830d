#include "contacts/model/KRStoredReading.h"

#include "contacts/model/KRObjectEmail.h"
#include "contacts/model/KRObjectInstantMessage.h"
#include "contacts/model/KRObjectPersonName.h"
#include "contacts/model/KRObjectPhone.h"

namespace {

const KRMutableSingleValue* single(const KRStoredValue* stored) {
  return dynamic_cast<const KRMutableSingleValue*>(stored);
}

const KRMutableMultipleValue* multiple(const KRStoredValue* stored) {
  return dynamic_cast<const KRMutableMultipleValue*>(stored);
}

/// The list of a single value that holds one, such as the tags.
const KRValueList* listOf(const KRStoredValue* stored) {
  const auto* value = single(stored);
  return value != nullptr ? value->value().as<KRValueList>() : nullptr;
}

KRText textOrDate(const KRValue& value, KRHold& hold) {
  if (const KRString* text = value.asText()) return *text;
  if (const KRDate* date = value.asDate()) return hold.keep(date->description());
  return {};
}

/// Fills the text and the service of an entry from its value.
void readObject(const KRObject* object, KREntryView& entry) {
  if (const auto* phone = dynamic_cast<const KRObjectPhone*>(object)) {
    entry.text = phone->phoneNumber();
  } else if (const auto* email = dynamic_cast<const KRObjectEmail*>(object)) {
    entry.text = email->email();
  } else if (const auto* account = dynamic_cast<const KRObjectInstantMessage*>(object)) {
    entry.text = account->userName();
    // Services are shared and their names never change.
    if (account->server() != nullptr) entry.server = account->server()->name();
  }
}

bool handOut(const KRMutableSingleValue& value, KRHold& hold, const KREntryVisitor& visitor) {
  KREntryView entry;
  // The name is the label's own text, so the view outlives the copies made here.
  if (const KRRef<KRLabel> label = value.label()) entry.label = label->name();
  if (const auto* address = value.value().as<KRObjectAddress>()) {
    const KRAddressView view = krAddressView(*address);
    entry.address = &view;
    return visitor(entry);
  }
  if (const KRObject* object = value.value().object()) {
    readObject(object, entry);
  } else {
    entry.text = textOrDate(value.value(), hold);
  }
  return visitor(entry);
}

}  // namespace

KRText krReadText(const KRStoredValue* stored, KRHold& hold) {
  const auto* value = single(stored);
  return value != nullptr ? textOrDate(value->value(), hold) : KRText();
}

KRNameView krReadName(const KRStoredValue* stored) {
  const auto* value = single(stored);
  const auto* name = value != nullptr ? value->value().as<KRObjectPersonName>() : nullptr;
  if (name == nullptr) return {};
  return {true, name->first(), name->middle(), name->last()};
}

void krReadEntries(const KRStoredValue* stored, KRHold& hold, KREntryVisitor visitor) {
  if (const auto* values = multiple(stored)) {
    for (size_t i = 0; i < values->count(); ++i) {
      if (!handOut(*values->valueAtIndex(i), hold, visitor)) return;
    }
  } else if (const auto* list = listOf(stored)) {
    for (const KRValue& element : list->values()) {
      KREntryView entry;
      const KRString* text = element.asText();
      entry.text = text != nullptr ? text->text() : hold.keep(element.description());
      if (!visitor(entry)) return;
    }
  }
}

size_t krEntryCount(const KRStoredValue* stored) {
  if (const auto* values = multiple(stored)) return values->count();
  const auto* list = listOf(stored);
  return list != nullptr ? list->values().size() : 0;
}

KRAddressView krAddressView(const KRObjectAddress& address) {
  KRAddressView view;
  view.countryCode = address.countryCode();
  for (size_t place = 0; place < kKRAddressFieldCount; ++place) view.fields[place] = address.standardFields()[place];
  if (!address.furtherFields().empty()) view.further = &address.furtherFields();
  return view;
}
