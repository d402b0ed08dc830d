#include "contacts/model/KRReading.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "contacts/KRTempPerson.h"
#include "contacts/model/ABPerson.h"
#include "tests/contacts/ModelSamples.h"

namespace {

/// What the reading interface has to answer, read from the stored values with nothing but their own operations.
class Judge {
 public:
  explicit Judge(const IKRPerson& person) : person_(person) {}

  std::string text(const KRProperty& property) const {
    const auto stored = person_.valueByProperty(&property);
    const auto* single = dynamic_cast<const KRMutableSingleValue*>(stored.get());
    return single != nullptr && single->value().object() == nullptr ? show(single->value()) : "-";
  }

  std::vector<std::string> entries(const KRProperty& property) const {
    std::vector<std::string> all;
    const auto stored = person_.valueByProperty(&property);
    if (const auto* multiple = dynamic_cast<const KRMutableMultipleValue*>(stored.get())) {
      for (size_t i = 0; i < multiple->count(); ++i) all.push_back(entry(*multiple->valueAtIndex(i)));
    } else if (const auto* single = dynamic_cast<const KRMutableSingleValue*>(stored.get())) {
      if (const auto* list = single->value().as<KRValueList>()) {
        for (const KRValue& each : list->values()) all.push_back("-|" + show(each.isNothing() ? "(null)"_kr : each));
      }
    }
    return all;
  }

  static std::string show(const KRValue& value) {
    return value.isNothing() ? "-" : "\"" + std::string(value.description().view()) + "\"";
  }
  static std::string show(KRText text) { return text.isNothing() ? "-" : "\"" + std::string(text.view()) + "\""; }

 private:
  static std::string entry(const KRMutableSingleValue& value) {
    const std::string label = value.label() ? show(value.label()->name().text()) : "-";
    if (const auto* phone = value.value().as<KRObjectPhone>()) return label + "|" + show(phone->phoneNumber().text());
    if (const auto* email = value.value().as<KRObjectEmail>()) return label + "|" + show(email->email().text());
    if (const auto* account = value.value().as<KRObjectInstantMessage>()) {
      const std::string name = show(account->userName().text());
      const KRInstantMessageServer* server = account->server();
      return label + "|" + name + (server != nullptr ? "@" + show(server->name().text()) : "");
    }
    if (const auto* address = value.value().as<KRObjectAddress>()) {
      return label + "|" + std::string(address->description().view());
    }
    if (value.value().object() != nullptr) return label + "|-";
    return label + "|" + show(value.value());
  }

  const IKRPerson& person_;
};

std::vector<std::string> readEntries(const IKRPerson& person, KROrdinal ordinal) {
  std::vector<std::string> all;
  KRHold hold;
  person.readEntries(ordinal, hold, [&](const KREntryView& entry) {
    std::string shown = Judge::show(entry.label) + "|";
    if (entry.address != nullptr) {
      auto address = krMake<KRObjectAddress>();
      address->setCountryCode(KRString(entry.address->countryCode));
      for (size_t i = 0; i < kKRAddressFieldCount; ++i) {
        address->setStringValue(KRString(entry.address->fields[i]), kKRAddressFieldNames[i]);
      }
      if (entry.address->further != nullptr) {
        for (const auto& field : *entry.address->further) address->setStringValue(field.value, field.name);
      }
      shown += address->description().view();
    } else {
      shown += Judge::show(entry.text);
      if (!entry.server.isNothing()) shown += "@" + Judge::show(entry.server);
    }
    all.push_back(shown);
    return true;
  });
  return all;
}

TEST(KRReading, AnswersWhatTheStoredValuesHold) {
  ModelSamples samples(47);
  for (int round = 0; round < 1500; ++round) {
    const auto temporary = krMake<KRTempPerson>();
    const auto host = krMake<HostPerson>();
    const auto record = krMake<ABPerson>();
    for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
      if (samples.chance(3)) continue;
      // Mostly what the property holds, now and then something else.
      const auto value = samples.chance(12) ? samples.anyStored() : samples.stored(*property);
      temporary->setValue(value, property);
      host->setValue(value, property);
      record->setValue(value, property);
    }
    const Judge judge(*host);
    KRHold hold;
    const IKRPerson* const persons[] = {temporary.get(), host.get(), record.get()};
    for (const IKRPerson* person : persons) {
      for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
        SCOPED_TRACE(property->name().view());
        ASSERT_EQ(Judge::show(person->readText(property->ordinal(), hold)), judge.text(*property));
        const auto entries = judge.entries(*property);
        ASSERT_EQ(readEntries(*person, property->ordinal()), entries);
        ASSERT_EQ(person->entryCount(property->ordinal()), entries.size());
        ASSERT_EQ(person->valueByProperty(property), host->valueByProperty(property));
        const KRRecordValue mine = person->valueForProperty(property->name());
        const KRRecordValue theirs = host->valueForProperty(property->name());
        ASSERT_EQ(mine.text(), theirs.text());
        ASSERT_EQ(mine.list() == nullptr, theirs.list() == nullptr);
      }
      const KRNameView mine = person->readName(hold);
      const KRNameView theirs = host->readName(hold);
      ASSERT_EQ(mine.isPresent, theirs.isPresent);
      ASSERT_EQ(mine.first, theirs.first);
      ASSERT_EQ(mine.middle, theirs.middle);
      ASSERT_EQ(mine.last, theirs.last);
      ASSERT_EQ(person->isOrganization(), host->isOrganization());
      ASSERT_EQ(person->companyName(), host->companyName());
      ASSERT_EQ(person->jobTitle(), host->jobTitle());
      ASSERT_EQ(person->thumbnail(), host->thumbnail());
      ASSERT_EQ(person->notNullValueProperty(), host->notNullValueProperty());
    }
  }
}

}  // namespace
