#include "contacts/KRTrashPerson.h"

#include <gtest/gtest.h>

#include "contacts/KRContactsArchive.h"
#include "contacts/KRTempPerson.h"
#include "contacts/model/KRModelArchive.h"
#include "platform/KRKeyedArchiver.h"
#include "tests/contacts/ModelSamples.h"

namespace {

KRRef<ABPerson> ann() {
  return ABPerson::initWithVCardRepresentation(
      "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:ann\r\nN:Lee;Ann;Mary;Dr.;\r\nTEL;TYPE=work:1\r\nTEL:2\r\nBDAY:1990-03-01\r\n"
      "CATEGORIES:a,b\r\nPHOTO;ENCODING=b;TYPE=PNG:iVBORw0KGgo=\r\nADR:;;Main 1;Town;;1;Utopia\r\nNOTE:x\r\n"
      "END:VCARD\r\n");
}

KRRef<KRTrashPerson> again(const KRRef<KRTrashPerson>& person) {
  const auto value = KRKeyedUnarchiver::unarchive(KRKeyedArchiver::archivedData(person), krContactsArchiveClasses());
  return KRRef<KRTrashPerson>(value ? value->as<KRTrashPerson>() : nullptr);
}

void expectSameValues(const IKRPerson& a, const IKRPerson& b) {
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    EXPECT_TRUE(krEqualObjects(a.valueByProperty(property).get(), b.valueByProperty(property).get()))
        << property->name().view();
  }
}

TEST(KRTrashPerson, CopiesWhatTheRecordInterfaceShows) {
  const KRRef<ABPerson> from = ann();
  const auto made = KRTrashPerson::initWithPerson(from.get(), "home"_kr);
  EXPECT_EQ(made->ID(), "ann"_kr);
  EXPECT_EQ(made->fromID(), "home"_kr);
  EXPECT_EQ(made->addressBookID(), KRTrashAddressBookID);
  EXPECT_EQ(made->valueForProperty(kABFirstNameProperty).text(), "Ann"_kr);
  EXPECT_EQ(made->valueForProperty(kABPhoneProperty).list()->count(), 2U);
  EXPECT_GE(made->notNullValueProperty().size(), 7U);
  expectSameValues(*made, *from);
}

TEST(KRTrashPerson, ComesBackFromItsArchive) {
  const auto made = KRTrashPerson::initWithPerson(ann().get(), "home"_kr);
  const auto read = again(made);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->ID(), "ann"_kr);
  EXPECT_EQ(read->fromID(), "home"_kr);
  expectSameValues(*read, *made);
}

TEST(KRTrashPerson, AnEmptyOneIsArchivedToo) {
  const auto made = KRTrashPerson::initWithPerson(nullptr, {});
  EXPECT_TRUE(made->notNullValueProperty().empty());
  const auto read = again(made);
  ASSERT_TRUE(read);
  EXPECT_TRUE(read->fromID().isNothing());
  EXPECT_TRUE(read->notNullValueProperty().empty());
  EXPECT_EQ(read->ID(), made->ID());
}

TEST(KRTrashPerson, TakesPersonsOfAnyKind) {
  const auto temporary = krMake<KRTempPerson>("t"_kr);
  temporary->setRecordValue("Ann"_kr, kABFirstNameProperty);
  const auto made = KRTrashPerson::initWithPerson(temporary.get(), "csv"_kr);
  EXPECT_EQ(made->ID(), "t"_kr);
  EXPECT_EQ(made->displayName(), temporary->displayName());
  const HostPerson host;
  EXPECT_EQ(KRTrashPerson::initWithPerson(&host, {})->ID(), "host-1"_kr);
}

TEST(KRTrashPerson, ValuesOfOddKindsNeitherStopTheCopyNorTheArchive) {
  ModelSamples samples(7);
  for (int round = 0; round < 300; ++round) {
    const auto person = krMake<KRTempPerson>("odd"_kr);
    for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
      if (samples.chance(2)) person->setValue(samples.anyStored(), property);
    }
    const auto made = KRTrashPerson::initWithPerson(person.get(), "x"_kr);
    const auto read = again(made);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->displayName(), made->displayName());
  }
}

TEST(KRTrashPerson, AnArchiveWithAnIdentifierThatIsNoTextIsDamaged) {
  struct Broken : KRTrashPerson {
    void encodeWithCoder(KRKeyedArchiver& coder) const override { coder.encodeInteger(1, "ID"); }
  };
  const auto value =
      KRKeyedUnarchiver::unarchive(KRKeyedArchiver::archivedData(krMake<Broken>()), krContactsArchiveClasses());
  EXPECT_FALSE(value);
}

}  // namespace
