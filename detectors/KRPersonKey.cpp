#include "detectors/KRPersonKey.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <typeinfo>

#include "contacts/model/ABPerson.h"
#include "contacts/model/KRAddressFormater.h"
#include "contacts/model/KRObjectInstantMessage.h"
#include "contacts/model/KRObjectPersonName.h"
#include "contacts/model/KRStoredReading.h"
#include "platform/KRBytes.h"

namespace {

/// An absent text is written out, so that it differs from an empty one.
template <class To>
void append(To& to, KRText text) {
  to.append(text.isNothing() ? std::string_view("(null)") : text.view());
}

template <class To>
void append(To& to, std::string_view label, KRText text, std::string_view end = {}) {
  to.append(label);
  append(to, text);
  to.append(end);
}

template <class To>
void appendStart(To& to, KRText name) {
  append(to, {}, name, ":");
}

template <class To>
void appendName(To& to, KRText first, KRText middle, KRText last) {
  // The letters of the first label are kept on purpose: keys are compared with keys that hosts made before.
  append(to, "fisrt:", first, "\t");
  append(to, "middle:", middle, "\t");
  append(to, "last:", last, "\t");
}

void appendAccount(std::string& to, KRText server, KRText userName) {
  if (!server.isNothing()) append(to, "server:", server, "\t");
  append(to, "userName:", userName, "\t");
}

void appendAddress(std::string& to, const KRAddressView& address) {
  append(to, "code:", address.countryCode, "\t");
  to += "address:";
  KRAddressFormater::append(to, address);
  to += '\t';
}

void appendTags(std::string& to, const KRValueList& tags) {
  for (const KRValue& tag : tags.values()) append(to, {}, tag.description(), ",");
}

/// The object of the value when it is what the property holds.
template <class T>
const T* heldBy(KROrdinal holder, const KRValue& value, const KRProperty& property) {
  return property.ordinal() == holder ? value.as<T>() : nullptr;
}

void appendSingle(std::string& to, const KRValue& value, const KRProperty& property) {
  if (const auto* name = heldBy<KRObjectPersonName>(KROrdinal::Name, value, property)) {
    appendName(to, name->first(), name->middle(), name->last());
  } else if (const auto* tags = heldBy<KRValueList>(KROrdinal::Tags, value, property)) {
    appendTags(to, *tags);
  } else {
    append(to, value.description());
  }
}

/// The texts of a property that a person answers by views alone; nothing for none. What stands behind `enough` bytes
/// may be missing: texts that do not count are not looked at.
void appendViews(std::string& to, const IKRPerson& person, const KRProperty& property, KRHold& hold, size_t enough) {
  const KROrdinal ordinal = property.ordinal();
  if (ordinal == KROrdinal::Name) {
    const KRNameView name = person.readName(hold);
    if (!name.isPresent) return;
    appendStart(to, property.name());
    appendName(to, name.first, name.middle, name.last);
    return;
  }
  if (!property.isMultiple() && ordinal != KROrdinal::Tags) {
    const KRText text = person.readText(ordinal, hold);
    if (text.isNothing()) return;
    appendStart(to, property.name());
    if (to.size() < enough) append(to, text);
    return;
  }
  bool isFirst = true;
  person.readEntries(ordinal, hold, [&](const KREntryView& entry) {
    if (isFirst) appendStart(to, property.name());
    isFirst = false;
    if (to.size() >= enough) return false;
    if (ordinal == KROrdinal::Tags) {
      append(to, {}, entry.text, ",");
      return true;
    }
    appendStart(to, entry.label);
    if (entry.address != nullptr) {
      appendAddress(to, *entry.address);
    } else if (ordinal == KROrdinal::InstantMessage) {
      appendAccount(to, entry.server, entry.text);
    } else {
      append(to, {}, entry.text, "\t");
    }
    return true;
  });
}

/// The record that holds whatever the person holds, or null where some of it may be elsewhere.
const KRCardRecord* wholeRecord(const IKRPerson& person) {
  // Of classes made from that one nobody knows what they answer.
  if (typeid(person) != typeid(ABPerson)) return nullptr;
  const auto& record = static_cast<const ABPerson&>(person);
  return record.isChanged() ? nullptr : &record.record();
}

}  // namespace

void krAppendEntry(std::string& to, const KRMutableSingleValue& entry, const KRProperty& property) {
  const KRRef<KRLabel> label = entry.label();
  appendStart(to, label ? label->name() : KRString());
  const KRValue& value = entry.value();
  if (const auto* phone = heldBy<KRObjectPhone>(KROrdinal::Phone, value, property)) {
    append(to, {}, phone->phoneNumber(), "\t");
  } else if (const auto* email = heldBy<KRObjectEmail>(KROrdinal::Email, value, property)) {
    append(to, {}, email->email(), "\t");
  } else if (const auto* account = heldBy<KRObjectInstantMessage>(KROrdinal::InstantMessage, value, property)) {
    appendAccount(to, account->server() != nullptr ? account->server()->name() : KRString(), account->userName());
  } else if (const auto* address = heldBy<KRObjectAddress>(KROrdinal::Address, value, property)) {
    appendAddress(to, krAddressView(*address));
  } else if (value.isNothing() && property.ordinal() == KROrdinal::InstantMessage) {
    appendAccount(to, {}, {});
  } else if (value.isNothing() && property.ordinal() == KROrdinal::Address) {
    appendAddress(to, {});
  } else {
    append(to, {}, value.description(), "\t");
  }
}

void krAppendValue(std::string& to, const KRStoredValue& value, const KRProperty& property) {
  appendStart(to, property.name());
  if (const auto* multiple = dynamic_cast<const KRMutableMultipleValue*>(&value)) {
    for (size_t i = 0; i < multiple->count(); ++i) krAppendEntry(to, *multiple->valueAtIndex(i), property);
  } else if (const auto* single = dynamic_cast<const KRMutableSingleValue*>(&value)) {
    appendSingle(to, single->value(), property);
  } else {
    append(to, value.description());
  }
}

namespace {

/// One property, of which what stands behind `enough` bytes may be missing.
void appendProperty(std::string& to, const IKRPerson& person, const KRProperty& property, KRHold& hold, size_t enough) {
  if (person.readsWhole(property.ordinal())) {
    appendViews(to, person, property, hold, enough);
  } else if (const KRStoredValue* value = hold.keep(person.valueByProperty(&property))) {
    krAppendValue(to, *value, property);
  }
}

/// Writes one property after the other until the text has so many bytes; whether all were written.
bool appendProperties(std::string& to, const IKRPerson& person, KRHold& hold, size_t enough) {
  const KRCardRecord* record = wholeRecord(person);
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    if (property->ordinal() == KROrdinal::Thumbnail) continue;
    // Most persons hold few properties: those that are not there are passed over in one step each.
    if (record == nullptr || record->has(property->ordinal())) appendProperty(to, person, *property, hold, enough);
    if (to.size() >= enough) return false;
  }
  return true;
}

void appendMark(std::string& to, const IKRPerson& person) {
  if (person.isOrganization()) to.append(":OrgString##");
}

}  // namespace

void krAppendProperty(std::string& to, const IKRPerson& person, const KRProperty& property, KRHold& hold) {
  appendProperty(to, person, property, hold, std::string::npos);
}

void krAppendPersonKey(std::string& to, const IKRPerson& person, KRText digest, KRHold& hold) {
  appendProperties(to, person, hold, std::string::npos);
  to.append(digest.view());
  appendMark(to, person);
}

namespace {

/// The first bytes of a key, written without asking for room each time; what does not fit is left out.
class StartWriter {
 public:
  static constexpr size_t kMost = 64;

  explicit StartWriter(size_t size) noexcept : size_(size) {}

  bool isFull() const noexcept { return used_ == size_; }
  std::string_view text() const noexcept { return {bytes_.data(), used_}; }

  [[gnu::noinline]] void append(std::string_view text) noexcept {
    const size_t count = std::min(text.size(), size_ - used_);
    for (size_t done = 0; done < count; done += sizeof(uint64_t)) {
      const uint64_t word = krLoadPart(text.data() + done, count - done);
      std::memcpy(bytes_.data() + used_ + done, &word, sizeof word);
    }
    used_ += count;
  }

 private:
  /// Words are written whole.
  std::array<char, kMost + sizeof(uint64_t)> bytes_;
  const size_t size_;
  size_t used_ = 0;
};

/// The phones or else the e-mails, where they come next behind the name; null where something else does.
const KRProperty* numbersBehindName(const KRCardRecord& record) noexcept {
  if (!record.has(KROrdinal::Name)) return nullptr;
  for (const KROrdinal before : {KROrdinal::PhoneticFirstName, KROrdinal::PhoneticMiddleName,
                                 KROrdinal::PhoneticLastName, KROrdinal::Nickname}) {
    if (record.has(before)) return nullptr;
  }
  for (const KROrdinal next : {KROrdinal::Phone, KROrdinal::Email}) {
    if (record.has(next)) return KRProperty::propertyWithOrdinal(next);
  }
  return nullptr;
}

/// Writes in few steps what most keys begin with: the name, then phones or e-mails. False, with nothing written, for
/// keys that go on otherwise before there is enough.
bool appendUsualStart(std::string& to, const IKRPerson& person, size_t size, KRHold& hold) {
  const KRCardRecord* record = wholeRecord(person);
  const KRProperty* next = record != nullptr && size <= StartWriter::kMost ? numbersBehindName(*record) : nullptr;
  if (next == nullptr) return false;
  const KRNameView name = person.readName(hold);
  StartWriter start(size);
  appendStart(start, KRProperty::propertyWithOrdinal(KROrdinal::Name)->name());
  appendName(start, name.first, name.middle, name.last);
  appendStart(start, next->name());
  if (!start.isFull()) {
    person.readEntries(next->ordinal(), hold, [&](const KREntryView& entry) {
      appendStart(start, entry.label);
      append(start, {}, entry.text, "\t");
      return !start.isFull();
    });
  }
  if (!start.isFull()) return false;
  to.append(start.text());
  return true;
}

}  // namespace

void krAppendPersonKeyStart(std::string& to, const IKRPerson& person, size_t size, KRHold& hold) {
  if (appendUsualStart(to, person, size, hold)) return;
  const size_t end = to.size() + size;
  if (appendProperties(to, person, hold, end)) appendMark(to, person);
  if (to.size() > end) to.resize(end);
}
