#include "contacts/model/KRModelArchive.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "contacts/KRContactsArchive.h"
#include "contacts/KRTempPerson.h"
#include "platform/KRKeyedArchiver.h"
#include "tests/contacts/ModelSamples.h"

namespace {

/// The value read back, nothing when the archive does not open.
KRValue throughArchive(const KRValue& value) {
  const std::string data = KRKeyedArchiver::archivedData(value);
  const auto back = KRKeyedUnarchiver::unarchive(data, krContactsArchiveClasses());
  EXPECT_TRUE(back.has_value());
  return back.value_or(KRValue());
}

TEST(KRModelArchive, ReadsBackEveryKindOfStoredValue) {
  ModelSamples samples(61);
  for (int i = 0; i < 3000; ++i) {
    const auto value = samples.anyStored();
    const KRValue back = throughArchive(value);
    ASSERT_TRUE(KRValue(value).isEqual(back)) << value->description().view();
    ASSERT_EQ(back.description(), value->description());
  }
}

TEST(KRModelArchive, KeepsNothingApartFromEmpty) {
  const KRValue back = throughArchive(krMake<KRObjectPersonName>(KRString(), ""_kr, "Lee"_kr));
  const auto* name = back.as<KRObjectPersonName>();
  ASSERT_NE(name, nullptr);
  EXPECT_TRUE(name->first().isNothing());
  EXPECT_FALSE(name->middle().isNothing());
}

TEST(KRModelArchive, KeepsLabelNamesAndTheMainEntry) {
  auto values = krMake<KRMutableMultipleValue>();
  for (const char* number : {"1", "2"}) {
    auto label = krMake<KRLabel>("home"_kr);
    label->setDisplayName("Zuhause"_kr);
    values->addValue(krMake<KRMutableSingleValue>(krMake<KRObjectPhone>(KRString(number)), label, KRValueType::Phone));
  }
  values->setMainIndex(1);
  const KRValue back = throughArchive(values);
  const auto* read = back.as<KRMutableMultipleValue>();
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(read->mainValue(), read->valueAtIndex(1));
  EXPECT_EQ(read->valueAtIndex(0)->label()->name(), "home");
  EXPECT_EQ(read->valueAtIndex(0)->label()->displayName(), "Zuhause");
}

TEST(KRModelArchive, ReadsServicesAsTheSharedOnes) {
  for (const char* service : {"xmpp", "a-service-of-my-own"}) {
    KRInstantMessageServer* server = KRInstantMessageServer::serverWithName(service);
    const KRValue back = throughArchive(krMake<KRObjectInstantMessage>("ann"_kr, server));
    const auto* account = back.as<KRObjectInstantMessage>();
    ASSERT_NE(account, nullptr);
    EXPECT_EQ(account->server(), server);
    EXPECT_EQ(account->userName(), "ann");
  }
}

TEST(KRModelArchive, NamesEveryClassOnce) {
  std::set<std::string_view> names;
  for (const KRArchiveClass& row : krContactsArchiveClasses()) {
    EXPECT_TRUE(names.insert(row.name.view()).second);
    EXPECT_NE(row.decode, nullptr);
  }
  EXPECT_EQ(names.size(), krModelArchiveClasses().size() + 2);
  EXPECT_EQ(names.count("KRTempPerson"), 1U);
  EXPECT_EQ(names.count("KRTrashPerson"), 1U);
}

TEST(KRModelArchive, RefusesFieldsOfAnotherKind) {
  /// An object that writes a record under a class name of the model, with one field of its own choice.
  class Forged : public KRObject {
   public:
    Forged(KRText name, KRText key, KRValue value) : name_(name), key_(key), value_(std::move(value)) {}
    KRText archiveClassName() const override { return name_; }
    void encodeWithCoder(KRKeyedArchiver& coder) const override { coder.encode(value_, key_); }

   private:
    KRText name_;
    KRText key_;
    KRValue value_;
  };
  const KRValue list = krMake<KRValueList>(std::vector<KRValue>{"x"_kr});
  struct Row {
    const char* name;
    const char* key;
    KRValue value;
  };
  auto numbers = krMake<KRValueMap>();
  numbers->set("city"_kr, KRValue::whole(1));
  const Row rows[] = {
      {"KRLabel", "name", list},
      {"KRObjectPhone", "phoneNumber", list},
      {"KRObjectEmail", "email", KRValue::whole(1)},
      {"KRObjectPersonName", "middle", list},
      {"KRObjectAddress", "fields", list},
      {"KRObjectAddress", "fields", numbers},
      {"KRObjectInstantMessage", "server", list},
      {"KRMutableSingleValue", "label", list},
      {"KRMutableSingleValue", "type", KRValue::whole(int64_t{1} << 40)},
      {"KRMutableMultipleValue", "entries", list},
      {"KRMutableMultipleValue", "entries", "x"_kr},
      {"KRTempPerson", "phone", krMake<KRLabel>("x"_kr)},
      {"KRTempPerson", "groupIDs", "x"_kr},
      {"KRTempPerson", "ID", list},
  };
  for (const Row& row : rows) {
    const auto data = KRKeyedArchiver::archivedData(krMake<Forged>(row.name, row.key, row.value));
    EXPECT_FALSE(KRKeyedUnarchiver::unarchive(data, krContactsArchiveClasses()).has_value()) << row.name << row.key;
  }
}

TEST(KRTempPersonArchive, ReadsBackAllButTheTagList) {
  ModelSamples samples(73);
  for (int round = 0; round < 300; ++round) {
    const auto person = krMake<KRTempPerson>(KRString("archived-" + std::to_string(round)));
    for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
      if (samples.chance(2)) person->setValue(samples.stored(*property), property);
    }
    person->setTags({"A"_kr, "B"_kr});
    if (samples.chance(2)) person->setFromID("book"_kr);
    if (samples.chance(2)) person->setGroupIDs(KRStringList{"g1"_kr, "g2"_kr});
    const KRValue value = throughArchive(person);
    const auto* back = value.as<KRTempPerson>();
    ASSERT_NE(back, nullptr);
    EXPECT_TRUE(back->tagArray().empty());
    EXPECT_EQ(back->ID(), person->ID());
    EXPECT_EQ(back->fromID(), person->fromID());
    EXPECT_EQ(back->groupIDs(), person->groupIDs());
    ASSERT_EQ(back->notNullValueProperty(), person->notNullValueProperty());
    for (const KRProperty* property : person->notNullValueProperty()) {
      ASSERT_TRUE(back->valueByProperty(property)->isEqual(person->valueByProperty(property).get()));
    }
  }
}

TEST(KRTempPersonArchive, LeavesOutWhatIsNoProperty) {
  const auto person = krMake<KRTempPerson>("archived-x"_kr);
  person->setValue(krMake<KRMutableSingleValue>("44"_kr, KRRef<KRLabel>(), 0), "shoeSize"_kr);
  const KRValue value = throughArchive(person);
  EXPECT_EQ(value.as<KRTempPerson>()->valueByPropertyName("shoeSize"_kr), nullptr);
}

TEST(KRTempPersonArchive, ReadsAMissingIdentifierAsEmpty) {
  const KRValue value = throughArchive(krMake<KRTempPerson>(KRString()));
  const auto* back = value.as<KRTempPerson>();
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(back->ID(), "");
  EXPECT_FALSE(back->ID().isNothing());
}

TEST(KRTempPersonArchive, KeepsTheOrderOfAList) {
  std::vector<KRValue> persons;
  for (int i = 0; i < 50; ++i) persons.push_back(krMake<KRTempPerson>(KRString(std::to_string(i))));
  const KRValue value = throughArchive(krMake<KRValueList>(persons));
  const auto* back = value.as<KRValueList>();
  ASSERT_NE(back, nullptr);
  ASSERT_EQ(back->values().size(), persons.size());
  for (size_t i = 0; i < persons.size(); ++i) {
    EXPECT_EQ(back->values()[i].as<KRTempPerson>()->ID(), KRString(std::to_string(i)));
  }
}

}  // namespace
