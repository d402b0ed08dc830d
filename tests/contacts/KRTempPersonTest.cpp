#include "contacts/KRTempPerson.h"

#include <gtest/gtest.h>

#include <thread>

#include "tests/contacts/ModelSamples.h"

namespace {

KRRef<KRMutableSingleValue> single(const KRString& text) {
  return KRTempPerson::singleValueByMacValue(text, KRProperty::propertyWithName(KRProPertyNote));
}

void setName(KRTempPerson& person, const KRString& first, const KRString& last) {
  person.setValue(KRTempPerson::singleValueByMacValue(krMake<KRObjectPersonName>(first, KRString(), last),
                                                      KRProperty::propertyWithName(KRProPertyName)),
                  KRProPertyName);
}

/// An identifier that no other test uses: the cache of names is shared by the whole process.
KRString freshID() {
  static int count = 0;
  return KRString("temp-person-" + std::to_string(++count));
}

TEST(KRTempPerson, BeginsEmptyWithTheSharedIdentifier) {
  const auto person = krMake<KRTempPerson>();
  EXPECT_EQ(person->ID(), "123");
  EXPECT_EQ(person->displayName(), "");
  EXPECT_EQ(person->companyName(), "");
  EXPECT_TRUE(person->jobTitle().isNothing());
  EXPECT_FALSE(person->isOrganization());
  EXPECT_TRUE(person->groups().empty());
  EXPECT_TRUE(person->parentGroups().empty());
  EXPECT_TRUE(person->tagArray().empty());
  EXPECT_TRUE(person->notNullValueProperty().empty());
  EXPECT_TRUE(person->fromID().isNothing());
  EXPECT_FALSE(person->groupIDs().has_value());
  EXPECT_EQ(person->addressBookID(), "trash_addressbook");
  EXPECT_EQ(person->thumbnail(), nullptr);
  EXPECT_EQ(person->mainPhone(), nullptr);
}

TEST(KRTempPerson, KeepsItsIdentifierAndAlwaysNamesTheTrash) {
  const auto person = krMake<KRTempPerson>("x"_kr);
  person->setFromID("book"_kr);
  EXPECT_EQ(person->ID(), "x");
  EXPECT_EQ(person->fromID(), "book");
  EXPECT_EQ(person->addressBookID(), KRTrashAddressBookID);
}

TEST(KRTempPerson, IsAnOrganisationByTheUpperCasedFlag) {
  const auto person = krMake<KRTempPerson>(freshID());
  person->setValue(single(""_kr), KRProPertyCompany);
  person->setValue(single("yes"_kr), KRProPertyIsOrganization);
  EXPECT_TRUE(person->isOrganization());
  EXPECT_EQ(person->showName(), "");
  person->setIsOrganization(false);
  EXPECT_FALSE(person->isOrganization());
  const auto* flag = dynamic_cast<KRMutableSingleValue*>(person->valueByPropertyName(KRProPertyIsOrganization).get());
  ASSERT_NE(flag, nullptr);
  EXPECT_EQ(flag->value().text(), "NO");
  EXPECT_EQ(flag->label(), nullptr);
  EXPECT_EQ(flag->type(), 0);
}

TEST(KRTempPerson, HasAnEmptyCompanyButNoEmptyJobTitle) {
  const auto person = krMake<KRTempPerson>(freshID());
  person->setValue(single(""_kr), KRProPertyCompany);
  person->setValue(single(""_kr), KRProPertyJobTitle);
  EXPECT_EQ(person->companyName(), "");
  EXPECT_FALSE(person->companyName().isNothing());
  EXPECT_TRUE(person->jobTitle().isNothing());
  person->setValue(single("Chief"_kr), KRProPertyJobTitle);
  EXPECT_EQ(person->jobTitle(), "Chief");
}

TEST(KRTempPerson, ShowsNoNameWithoutANameObject) {
  const auto person = krMake<KRTempPerson>(freshID());
  person->setValue(krMake<KRMutableSingleValue>(), KRProPertyName);
  EXPECT_EQ(person->displayName(), "");
  EXPECT_NE(person->valueByPropertyName(KRProPertyName), nullptr);
  setName(*person, "Ann"_kr, "Lee"_kr);
  EXPECT_EQ(person->displayName(), "Ann Lee");
  EXPECT_EQ(person->showName(), "Ann Lee");
}

TEST(KRTempPerson, ReplacesAValueButNeverClearsIt) {
  const auto person = krMake<KRTempPerson>(freshID());
  const auto first = single("1"_kr);
  const auto second = single("2"_kr);
  person->setValue(first, KRProPertyNote);
  EXPECT_EQ(person->valueByPropertyName(KRProPertyNote), first);
  person->setValue(KRRef<KRStoredValue>(), KRProPertyNote);
  person->setRecordValue(KRValue(), KRProPertyNote);
  person->setValue(second, KRString());
  person->setValue(second, static_cast<const KRProperty*>(nullptr));
  EXPECT_EQ(person->valueByPropertyName(KRProPertyNote), first);
  EXPECT_EQ(person->valueByPropertyName(KRString()), nullptr);
  person->setValue(second, KRProPertyNote);
  EXPECT_EQ(person->valueByPropertyName(KRProPertyNote), second);
}

TEST(KRTempPerson, KeepsEveryPropertyApartWhateverTheOrder) {
  const auto& all = KRProperty::StandardPropertyArray();
  const auto person = krMake<KRTempPerson>(freshID());
  for (size_t i = 0; i < all.size(); ++i) {
    // Seven is prime to the count, so every property comes up, in an order of its own.
    const KRProperty* property = all[i * 7 % all.size()];
    person->setValue(single(property->name()), property);
  }
  person->setValue(single("further"_kr), "shoeSize"_kr);
  person->setValue(single("empty"_kr), ""_kr);
  for (const KRProperty* property : all) {
    const auto* value = dynamic_cast<KRMutableSingleValue*>(person->valueByProperty(property).get());
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->value().text(), property->name());
  }
  EXPECT_EQ(person->valueForProperty("shoeSize"_kr).text(), "further");
  EXPECT_EQ(person->valueForProperty(""_kr).text(), "empty");
  EXPECT_EQ(person->notNullValueProperty(), all);
  person->setValue(single("changed"_kr), "shoeSize"_kr);
  EXPECT_EQ(person->valueForProperty("shoeSize"_kr).text(), "changed");
}

TEST(KRTempPerson, LeavesAPartOfTheNameThatIsSetToNothing) {
  const auto person = krMake<KRTempPerson>(freshID());
  setName(*person, "Ann"_kr, "Lee"_kr);
  person->setRecordValue(KRValue(), kABFirstNameProperty);
  EXPECT_EQ(person->displayName(), "Ann Lee");
  person->setRecordValue("Bea"_kr, kABFirstNameProperty);
  EXPECT_EQ(person->displayName(), "Bea Lee");
}

TEST(KRTempPerson, KeepsItsImageWhenGivenNone) {
  const auto person = krMake<KRTempPerson>(freshID());
  const auto image = krMake<KRData>(std::string_view("\x89PNG"));
  person->setThumbnail({});
  EXPECT_EQ(person->valueByPropertyName(KRProPertyThumbnail), nullptr);
  person->setThumbnail(image);
  person->setThumbnail({});
  EXPECT_EQ(person->thumbnail(), image);
  EXPECT_EQ(person->imageData(), image);
}

TEST(KRTempPerson, AnswersMainEntries) {
  const auto person = krMake<KRTempPerson>(freshID());
  EXPECT_EQ(person->mainValueForProPertyName(KRProPertyPhone), nullptr);
  const auto values = krMake<KRMutableMultipleValue>();
  person->setValue(values, KRProPertyPhone);
  EXPECT_EQ(person->mainValueForProPertyName(KRProPertyPhone), nullptr);
  EXPECT_EQ(person->mainPhone(), nullptr);
  values->addValue(krMake<KRMutableSingleValue>(krMake<KRObjectPhone>("1"_kr), KRRef<KRLabel>(), KRValueType::Phone));
  EXPECT_EQ(person->mainValueForProPertyName(KRProPertyPhone), values->valueAtIndex(0));
  EXPECT_EQ(person->mainPhone()->phoneNumber(), "1");
  values->valueAtIndex(0)->setType(KRValueType::Multiple);
  EXPECT_EQ(person->mainValueForProPertyName(KRProPertyPhone), values->valueAtIndex(0));
  EXPECT_TRUE(person->valueOfMainValueForProPertyName(KRProPertyPhone).isNothing());
  EXPECT_EQ(person->mainPhone(), nullptr);
  person->setValue(single("a@example.com"_kr), KRProPertyEmail);
  EXPECT_EQ(person->mainValueForProPertyName(KRProPertyEmail), nullptr);
  EXPECT_EQ(person->mainEmail(), nullptr);
}

TEST(KRTempPerson, MakesSingleValues) {
  const KRProperty* title = KRProperty::propertyWithName(KRProPertyTitle);
  EXPECT_EQ(KRTempPerson::singleValueByMacValue(KRValue(), title), nullptr);
  const auto made = KRTempPerson::singleValueByMacValue("Dr."_kr, title);
  EXPECT_EQ(made->label()->name(), title->displayName());
  EXPECT_EQ(made->label()->displayName(), title->displayName());
  EXPECT_EQ(made->type(), 0);
  const auto label = krMake<KRLabel>("work"_kr);
  EXPECT_EQ(KRTempPerson::singleValueByMacValue(KRValue(), label, 6), nullptr);
  const auto typed = KRTempPerson::singleValueByMacValue("x"_kr, label, 6);
  EXPECT_EQ(typed->label(), label);
  EXPECT_EQ(typed->type(), 6);
  // Without a property the label has no name.
  EXPECT_TRUE(KRTempPerson::singleValueByMacValue("x"_kr, nullptr)->label()->name().isNothing());
}

TEST(KRTempPerson, AddsATagOnlyWhenItIsThereAlready) {
  const auto person = krMake<KRTempPerson>(freshID());
  person->addTag("A"_kr);
  EXPECT_TRUE(person->tagArray().empty());
  person->setTags({"A"_kr});
  person->addTag("A"_kr);
  EXPECT_EQ(person->tagArray(), (KRStringList{"A"_kr, "A"_kr}));
  person->addTag("a"_kr);
  EXPECT_EQ(person->tagArray().size(), 2U);
  person->addTag(person->liveTagArray()[0]);
  EXPECT_EQ(person->tagArray().size(), 3U);
}

TEST(KRTempPerson, MovesGivenTagsToTheEnd) {
  const auto person = krMake<KRTempPerson>(freshID());
  person->setTags({"A"_kr, "B"_kr});
  person->setTags({"B"_kr});
  EXPECT_EQ(person->tagArray(), (KRStringList{"A"_kr, "B"_kr}));
  person->setTags({"C"_kr});
  EXPECT_EQ(person->tagArray(), (KRStringList{"A"_kr, "B"_kr, "C"_kr}));
  person->setTags({"A"_kr});
  EXPECT_EQ(person->tagArray(), (KRStringList{"B"_kr, "C"_kr, "A"_kr}));
  person->setTags({});
  EXPECT_EQ(person->tagArray().size(), 3U);
  person->setTags(person->liveTagArray());
  EXPECT_EQ(person->tagArray(), (KRStringList{"B"_kr, "C"_kr, "A"_kr}));
}

TEST(KRTempPerson, RemovesATagWhereverItStands) {
  const auto person = krMake<KRTempPerson>(freshID());
  person->setTags({"A"_kr, "B"_kr, "A"_kr});
  person->removeTag("C"_kr);
  EXPECT_EQ(person->tagArray().size(), 3U);
  person->removeTag(person->liveTagArray()[0]);
  EXPECT_EQ(person->tagArray(), (KRStringList{"B"_kr}));
}

TEST(KRTempPerson, HandsOutItsTagListLive) {
  const auto person = krMake<KRTempPerson>(freshID());
  person->liveTagArray().push_back("A"_kr);
  EXPECT_EQ(person->tagArray(), (KRStringList{"A"_kr}));
  // The list stands apart from the tags property.
  EXPECT_EQ(person->valueByPropertyName(KRProPertyTags), nullptr);
  EXPECT_EQ(person->entryCount(KROrdinal::Tags), 0U);
}

TEST(KRTempPerson, TransliteratesNames) {
  EXPECT_EQ(KRTempPerson::transformChinese("Zoë Ångström"_kr), "ZOE ANGSTROM");
  EXPECT_EQ(KRTempPerson::transformChinese("中文"_kr), "ZHONG WEN");
  EXPECT_EQ(KRTempPerson::transformChinese(""_kr), "");
  EXPECT_TRUE(KRTempPerson::transformChinese(KRString()).isNothing());
}

TEST(KRTempPerson, FollowsANewNameInOnePinyinAndKeepsTheOther) {
  const auto person = krMake<KRTempPerson>(freshID());
  setName(*person, "Ann"_kr, "Lee"_kr);
  EXPECT_EQ(person->nameChineesPinyin(), "ANN LEE");
  EXPECT_EQ(person->showNameChineesPinyin(), "ANN LEE");
  setName(*person, "Bea"_kr, "Lee"_kr);
  EXPECT_EQ(person->nameChineesPinyin(), "BEA LEE");
  EXPECT_EQ(person->showNameChineesPinyin(), "ANN LEE");
  person->setValue(single("Acme"_kr), KRProPertyCompany);
  person->setIsOrganization(true);
  EXPECT_EQ(person->showName(), "Acme");
  EXPECT_EQ(person->showNameChineesPinyin(), "ANN LEE");
}

TEST(KRTempPerson, DropsTheCachedNameForNameCompanyAndFlagOnly) {
  const KRString ID = freshID();
  const auto person = krMake<KRTempPerson>(ID);
  const auto& cache = KRTempPerson::dictionaryPinyinSave();
  for (const KRString& name : {KRProPertyName, KRProPertyCompany, KRProPertyIsOrganization}) {
    person->nameChineesPinyin();
    EXPECT_EQ(cache.find(ID), "");
    person->setValue(single("x"_kr), name);
    EXPECT_TRUE(cache.find(ID).isNothing()) << name.view();
  }
  person->nameChineesPinyin();
  person->setValue(single("x"_kr), KRProPertyNote);
  person->setValue(KRRef<KRStoredValue>(), KRProPertyName);
  EXPECT_FALSE(cache.find(ID).isNothing());
  person->removeDisplayNameCache();
  EXPECT_TRUE(cache.find(ID).isNothing());
}

TEST(KRTempPerson, SharesTheCacheWithPersonsOfTheSameIdentifier) {
  const KRString ID = freshID();
  const auto first = krMake<KRTempPerson>(ID);
  const auto second = krMake<KRTempPerson>(ID);
  setName(*first, "Ann"_kr, "Lee"_kr);
  EXPECT_EQ(first->nameChineesPinyin(), "ANN LEE");
  EXPECT_EQ(second->nameChineesPinyin(), "ANN LEE");
  EXPECT_EQ(first->companyNameSaveID(), krConcat({"company_", ID}));
  EXPECT_EQ(first->showNameChineesPinyin(), "ANN LEE");
  EXPECT_EQ(KRTempPerson::dictionaryPinyinSave().find(first->companyNameSaveID()), "ANN LEE");
}

TEST(KRTempPerson, TransliteratesWithoutAnIdentifierToo) {
  const auto person = krMake<KRTempPerson>(KRString());
  setName(*person, "Ann"_kr, "Lee"_kr);
  EXPECT_EQ(person->nameChineesPinyin(), "ANN LEE");
  person->removeDisplayNameCache();
}

TEST(KRTempPerson, SetsOriginAndGroupsFromSeveralThreads) {
  const auto person = krMake<KRTempPerson>(freshID());
  const auto change = [&](const char* text) {
    for (int i = 0; i < 2000; ++i) {
      person->setFromID(KRString(text));
      person->setGroupIDs(KRStringList{KRString(text)});
      EXPECT_EQ(person->fromID().size(), 1U);
      EXPECT_EQ(person->groupIDs()->size(), 1U);
      person->nameChineesPinyin();
    }
  };
  std::thread a(change, "a");
  std::thread b(change, "b");
  a.join();
  b.join();
  person->setGroupIDs(std::nullopt);
  EXPECT_FALSE(person->groupIDs().has_value());
}

}  // namespace
