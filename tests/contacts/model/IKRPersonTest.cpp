#include "contacts/model/IKRPerson.h"

#include <gtest/gtest.h>

#include "tests/contacts/ModelSamples.h"

namespace {

KRRef<KRMutableSingleValue> textValue(const KRString& text, KROrdinal ordinal) {
  return krSingleValue(text, *KRProperty::propertyWithOrdinal(ordinal));
}

KRRef<KRMutableMultipleValue> phones(std::initializer_list<const char*> numbers) {
  auto values = krMake<KRMutableMultipleValue>();
  for (const char* number : numbers) {
    values->addValue(krMake<KRMutableSingleValue>(krMake<KRObjectPhone>(KRString(number)), krMake<KRLabel>("home"_kr),
                                                  KRValueType::Phone));
  }
  return values;
}

TEST(IKRPerson, ReadsAnUnsetPropertyAsEmpty) {
  const auto person = krMake<HostPerson>();
  KRHold hold;
  EXPECT_EQ(person->valueByPropertyName(KRProPertyPhone), nullptr);
  EXPECT_EQ(person->valueByProperty(nullptr), nullptr);
  EXPECT_EQ(person->entryCount(KROrdinal::Phone), 0U);
  EXPECT_TRUE(person->readText(KROrdinal::Note, hold).isNothing());
  EXPECT_FALSE(person->readName(hold).isPresent);
  EXPECT_EQ(person->mainPhone(), nullptr);
  EXPECT_EQ(person->mainEmail(), nullptr);
  EXPECT_EQ(person->thumbnail(), nullptr);
  EXPECT_EQ(person->imageData(), nullptr);
  EXPECT_TRUE(person->groups().empty());
  EXPECT_TRUE(person->parentGroups().empty());
  EXPECT_TRUE(person->tagArray().empty());
  EXPECT_TRUE(person->notNullValueProperty().empty());
  EXPECT_FALSE(person->isOrganization());
  EXPECT_EQ(person->companyName(), "");
  EXPECT_TRUE(person->jobTitle().isNothing());
  EXPECT_TRUE(person->nameChineesPinyin().isNothing());
  EXPECT_TRUE(person->showNameChineesPinyin().isNothing());
  EXPECT_TRUE(person->valueForProperty(kABFirstNameProperty).isNothing());
  EXPECT_TRUE(person->valueForKey(kABPhoneProperty).isNothing());
}

TEST(IKRPerson, KeepsTheVeryStoredValue) {
  auto person = krMake<HostPerson>();
  const auto value = phones({"1"});
  person->setValue(value, KRProperty::propertyWithName(KRProPertyPhone));
  EXPECT_EQ(person->valueByPropertyName(KRProPertyPhone), value);
  EXPECT_EQ(person->valueByProperty(KRProperty::propertyWithName(KRProPertyPhone)), value);
  person->setValue(phones({"2"}), static_cast<const KRProperty*>(nullptr));
  EXPECT_EQ(person->valueByPropertyName(KRProPertyPhone), value);
}

TEST(IKRPerson, ListsTheHeldPropertiesInStandardOrder) {
  auto person = krMake<HostPerson>();
  person->setValue(textValue("n"_kr, KROrdinal::Note), KRProPertyNote);
  person->setValue(phones({"1"}), KRProPertyPhone);
  person->setValue(textValue("x"_kr, KROrdinal::Note), "shoeSize"_kr);
  const auto held = person->notNullValueProperty();
  ASSERT_EQ(held.size(), 2U);
  EXPECT_EQ(held[0]->name(), KRProPertyPhone);
  EXPECT_EQ(held[1]->name(), KRProPertyNote);
}

TEST(IKRPerson, IsAnOrganisationWhenTheFlagSaysYesInAnyCase) {
  for (const char* yes : {"YES", "yes", "Yes", "yeS", "ye\xC5\xBF"}) {
    auto person = krMake<HostPerson>();
    person->setValue(textValue(KRString(yes), KROrdinal::IsOrganization), KRProPertyIsOrganization);
    EXPECT_TRUE(person->isOrganization()) << yes;
  }
  for (const char* no : {"NO", "", "y", "yes ", "true", "yess", "YE", "\xC5\xBF"}) {
    auto person = krMake<HostPerson>();
    person->setValue(textValue(KRString(no), KROrdinal::IsOrganization), KRProPertyIsOrganization);
    EXPECT_FALSE(person->isOrganization()) << no;
  }
}

TEST(IKRPerson, ShowsTheCompanyOfAnOrganisation) {
  auto person = krMake<HostPerson>();
  person->setValue(textValue("Acme"_kr, KROrdinal::Company), KRProPertyCompany);
  person->setValue(textValue("Chief"_kr, KROrdinal::JobTitle), KRProPertyJobTitle);
  EXPECT_EQ(person->showName(), "Host Person");
  person->setIsOrganization(true);
  EXPECT_TRUE(person->isOrganization());
  EXPECT_EQ(person->showName(), "Acme");
  EXPECT_EQ(person->jobTitle(), "Chief");
  person->setIsOrganization(false);
  EXPECT_EQ(person->showName(), "Host Person");
  person->setValue(textValue(""_kr, KROrdinal::JobTitle), KRProPertyJobTitle);
  EXPECT_TRUE(person->jobTitle().isNothing());
}

TEST(IKRPerson, AnswersTheMainPhone) {
  auto person = krMake<HostPerson>();
  auto values = phones({"1", "2"});
  person->setValue(values, KRProPertyPhone);
  EXPECT_EQ(person->mainPhone()->phoneNumber(), "1");
  values->setMainIndex(1);
  EXPECT_EQ(person->mainPhone()->phoneNumber(), "2");
  person->setValue(krMake<KRMutableMultipleValue>(), KRProPertyPhone);
  EXPECT_EQ(person->mainPhone(), nullptr);
}

TEST(IKRPerson, KeepsTagsInTheirProperty) {
  auto person = krMake<HostPerson>();
  person->addTag("a"_kr);
  person->addTag("b"_kr);
  person->addTag("a"_kr);
  person->addTag(KRString());
  EXPECT_EQ(person->tagArray(), (KRStringList{"a"_kr, "b"_kr}));
  person->removeTag("c"_kr);
  person->removeTag("a"_kr);
  EXPECT_EQ(person->tagArray(), (KRStringList{"b"_kr}));
  person->setTags({"x"_kr, "y"_kr});
  EXPECT_EQ(person->tagArray(), (KRStringList{"x"_kr, "y"_kr}));
  EXPECT_EQ(person->entryCount(KROrdinal::Tags), 2U);
  person->setTags({});
  EXPECT_EQ(person->valueByPropertyName(KRProPertyTags), nullptr);
}

TEST(IKRPerson, KeepsTheImage) {
  auto person = krMake<HostPerson>();
  const auto image = krMake<KRData>(std::string_view("\x89PNG"));
  person->setThumbnail(image);
  EXPECT_EQ(person->thumbnail(), image);
  EXPECT_EQ(person->imageData(), image);
  person->setThumbnail({});
  EXPECT_EQ(person->thumbnail(), nullptr);
}

TEST(IKRPerson, AnswersTextsThroughTheRecordInterface) {
  auto person = krMake<HostPerson>();
  person->setValue(krSingleValue(krMake<KRObjectPersonName>("Ann"_kr, KRString(), ""_kr),
                                 *KRProperty::propertyWithOrdinal(KROrdinal::Name)),
                   KRProPertyName);
  person->setValue(textValue("  "_kr, KROrdinal::Nickname), KRProPertyNickname);
  person->setValue(krSingleValue(*KRDate::make(std::nullopt, 2, 29), *KRProperty::propertyWithName(KRProPertyBirthday)),
                   KRProPertyBirthday);
  EXPECT_EQ(person->valueForProperty(kABFirstNameProperty).text(), "Ann");
  EXPECT_TRUE(person->valueForProperty(kABMiddleNameProperty).isNothing());
  EXPECT_EQ(person->valueForProperty(kABLastNameProperty).text(), "");
  EXPECT_FALSE(person->valueForProperty(kABLastNameProperty).isNothing());
  EXPECT_EQ(person->valueForProperty(kABNicknameProperty).text(), "  ");
  EXPECT_EQ(person->valueForProperty(KRProPertyBirthday).text(), "--02-29");
  EXPECT_EQ(person->valueForProperty(kABNicknameProperty).list(), nullptr);
}

TEST(IKRPerson, AnswersTheSameListByBothLookUps) {
  auto person = krMake<HostPerson>();
  person->setValue(phones({"1", "", "3"}), KRProPertyPhone);
  const KRRecordValue byProperty = person->valueForProperty(kABPhoneProperty);
  const KRRecordValue byKey = person->valueForKey(kABPhoneProperty);
  for (const KRRecordValue* value : {&byProperty, &byKey}) {
    const KRMultiValueView* list = value->list();
    ASSERT_NE(list, nullptr);
    EXPECT_TRUE(value->text().isNothing());
    ASSERT_EQ(list->count(), 3U);
    EXPECT_EQ(list->valueAtIndex(0)->text, "1");
    EXPECT_EQ(list->valueAtIndex(0)->label, "home");
    EXPECT_EQ(list->valueAtIndex(1)->text, "");
    EXPECT_EQ(list->valueForIdentifier(list->identifierAtIndex(2))->text, "3");
    EXPECT_EQ(list->valueAtIndex(3), nullptr);
    EXPECT_EQ(list->valueForIdentifier(3), nullptr);
  }
}

TEST(IKRPerson, AnswersAddressesAsFields) {
  auto person = krMake<HostPerson>();
  auto address = krMake<KRObjectAddress>();
  address->setCountryCode("GB"_kr);
  address->setStringValue("Exeter"_kr, "city"_kr);
  address->setStringValue("9"_kr, "zone"_kr);
  auto values = krMake<KRMutableMultipleValue>();
  values->addValue(krMake<KRMutableSingleValue>(address, KRRef<KRLabel>(), KRValueType::Address));
  person->setValue(values, KRProPertyAddress);
  const KRRecordValue value = person->valueForKey(kABAddressProperty);
  ASSERT_NE(value.list(), nullptr);
  const KRMultiValueView::Entry* entry = value.list()->valueAtIndex(0);
  EXPECT_TRUE(entry->text.isNothing());
  EXPECT_TRUE(entry->label.isNothing());
  EXPECT_EQ(entry->address.countryCode, "GB");
  EXPECT_EQ(entry->address.fields[static_cast<size_t>(KRAddressField::City)], "Exeter");
  ASSERT_NE(entry->address.further, nullptr);
  EXPECT_EQ(entry->address.further->front().value, "9");
}

TEST(IKRPerson, HasNoListForAPropertyWithoutEntries) {
  auto person = krMake<HostPerson>();
  person->setValue(krMake<KRMutableMultipleValue>(), KRProPertyPhone);
  EXPECT_TRUE(person->valueForProperty(kABPhoneProperty).isNothing());
}

TEST(IKRPerson, AnswersValuesUnderNamesOfTheHost) {
  auto person = krMake<HostPerson>();
  person->setValue(textValue("44"_kr, KROrdinal::Note), "shoeSize"_kr);
  person->setValue(phones({"1"}), "fax"_kr);
  EXPECT_EQ(person->valueForProperty("shoeSize"_kr).text(), "44");
  ASSERT_NE(person->valueForProperty("fax"_kr).list(), nullptr);
  EXPECT_TRUE(person->valueForProperty("hat"_kr).isNothing());
}

TEST(IKRPerson, HandsOutEntriesUntilTheVisitorStops) {
  auto person = krMake<HostPerson>();
  person->setValue(phones({"1", "2", "3"}), KRProPertyPhone);
  KRHold hold;
  std::string seen;
  person->readEntries(KROrdinal::Phone, hold, [&](const KREntryView& entry) {
    seen += entry.text.view();
    return seen.size() < 2;
  });
  EXPECT_EQ(seen, "12");
}

TEST(IKRPerson, HandsOutAnEntryWithoutValue) {
  auto person = krMake<HostPerson>();
  auto values = krMake<KRMutableMultipleValue>();
  values->addValue(krMake<KRMutableSingleValue>());
  person->setValue(values, KRProPertyEmail);
  KRHold hold;
  size_t entries = 0;
  person->readEntries(KROrdinal::Email, hold, [&](const KREntryView& entry) {
    ++entries;
    EXPECT_TRUE(entry.text.isNothing());
    EXPECT_TRUE(entry.label.isNothing());
    EXPECT_TRUE(entry.server.isNothing());
    EXPECT_EQ(entry.address, nullptr);
    return true;
  });
  EXPECT_EQ(entries, 1U);
}

TEST(IKRPerson, SetsTextsThroughTheRecordInterface) {
  auto person = krMake<HostPerson>();
  person->setRecordValue("Ann"_kr, kABFirstNameProperty);
  person->setRecordValue("Lee"_kr, kABLastNameProperty);
  person->setRecordValue("B."_kr, kABMiddleNameProperty);
  person->setRecordValue("Note"_kr, kABNoteProperty);
  EXPECT_EQ(person->valueForProperty(kABFirstNameProperty).text(), "Ann");
  EXPECT_EQ(person->valueForProperty(kABMiddleNameProperty).text(), "B.");
  EXPECT_EQ(person->valueForProperty(kABLastNameProperty).text(), "Lee");
  EXPECT_EQ(person->valueForProperty(kABNoteProperty).text(), "Note");
  const auto* name = dynamic_cast<KRMutableSingleValue*>(person->valueByPropertyName(KRProPertyName).get());
  ASSERT_NE(name, nullptr);
  EXPECT_EQ(name->type(), KRValueType::PersonName);
  person->setRecordValue(KRValue(), kABNoteProperty);
  EXPECT_EQ(person->valueByPropertyName(KRProPertyNote), nullptr);
}

TEST(IKRPerson, ClearsTheNameWithItsLastPart) {
  auto person = krMake<HostPerson>();
  person->setRecordValue("Ann"_kr, kABFirstNameProperty);
  person->setRecordValue("Lee"_kr, kABLastNameProperty);
  person->setRecordValue(KRValue(), kABFirstNameProperty);
  EXPECT_TRUE(person->valueForProperty(kABFirstNameProperty).isNothing());
  EXPECT_EQ(person->valueForProperty(kABLastNameProperty).text(), "Lee");
  person->setRecordValue(KRValue(), kABLastNameProperty);
  EXPECT_EQ(person->valueByPropertyName(KRProPertyName), nullptr);
}

TEST(IKRPerson, SetsListsAndIgnoresValuesOfAnotherKind) {
  auto person = krMake<HostPerson>();
  const auto values = phones({"1"});
  person->setRecordValue(values, kABPhoneProperty);
  EXPECT_EQ(person->valueByPropertyName(KRProPertyPhone), values);
  person->setRecordValue("1"_kr, kABPhoneProperty);
  EXPECT_EQ(person->valueByPropertyName(KRProPertyPhone), values);
  person->setRecordValue(values, kABNoteProperty);
  person->setRecordValue(KRValue::whole(3), kABNoteProperty);
  person->setRecordValue(values, kABFirstNameProperty);
  EXPECT_EQ(person->valueByPropertyName(KRProPertyNote), nullptr);
  EXPECT_EQ(person->valueByPropertyName(KRProPertyName), nullptr);
}

}  // namespace
