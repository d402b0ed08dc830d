#include "contacts/model/ABPerson.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "contacts/model/KRLabelTable.h"
#include "tests/contacts/vcard/VCardSamples.h"

namespace {

KRRef<ABPerson> personOf(const std::string& card) {
  return ABPerson::initWithVCardRepresentation(KRText(std::string_view(card)));
}

KRRef<ABPerson> richPerson() {
  return personOf(krRichCard("3.0"));
}

/// The person with every stored value made, so that it reads through them.
void makeAllValues(const ABPerson& person) {
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    static_cast<void>(person.valueByProperty(property));
  }
}

TEST(ABPerson, ReadsTheSameFromItsCardAndFromItsValues) {
  std::mt19937 random(5);
  for (int round = 0; round < 1500; ++round) {
    const KRCardsRead read = krReadCards(krRandomCard(random));
    for (size_t i = 0; i < read.count(); ++i) {
      const ABPerson& person = read.person(i);
      const std::string shown = krShownByReading(person);
      std::vector<size_t> counts;
      for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
        counts.push_back(person.entryCount(property->ordinal()));
      }
      const auto held = person.notNullValueProperty();
      ASSERT_EQ(shown, krShownByValues(person)) << person.card();
      // From here on every reading goes through the values.
      makeAllValues(person);
      ASSERT_EQ(shown, krShownByReading(person)) << person.card();
      ASSERT_EQ(held, person.notNullValueProperty());
      ASSERT_EQ(held, person.IKRPerson::notNullValueProperty());
      size_t index = 0;
      for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
        ASSERT_EQ(counts[index++], person.entryCount(property->ordinal())) << property->name().view();
      }
    }
  }
}

/// The texts of a property's entries, read with everything else and read alone.
std::pair<std::vector<std::string>, std::vector<std::string>> textsOf(const IKRPerson& person, KROrdinal property) {
  std::pair<std::vector<std::string>, std::vector<std::string>> texts;
  const auto shown = [](KRText text) { return text.isNothing() ? std::string("-") : std::string(text.view()); };
  KRHold hold;
  person.readEntries(property, hold, [&](const KREntryView& entry) {
    texts.first.push_back(shown(entry.text));
    return true;
  });
  person.readTexts(property, hold, [&](KRText text) {
    texts.second.push_back(shown(text));
    return true;
  });
  return texts;
}

TEST(ABPerson, ReadsTheTextsOfEntriesAlone) {
  const std::string label(300, 'x');
  const auto person = personOf("BEGIN:VCARD\r\nVERSION:3.0\r\nN:Lee;Bo;;;\r\nTEL;TYPE=" + label +
                               ":1\r\nTEL:2\r\nitem1.TEL:3\r\nitem1.X-ABLabel:" + label +
                               "\r\nEMAIL:a@b\r\nADR:;;Street;City;;;Land\r\nIMPP:xmpp:me\r\nCATEGORIES:a,b\r\n"
                               "URL:u\r\nEND:VCARD\r\n");
  ASSERT_TRUE(person);
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    const auto [entries, texts] = textsOf(*person, property->ordinal());
    EXPECT_EQ(texts, entries) << property->name().view();
  }
  EXPECT_EQ(textsOf(*person, KROrdinal::Phone).second, (std::vector<std::string>{"1", "2", "3"}));
  size_t seen = 0;
  KRHold hold;
  person->readTexts(KROrdinal::Phone, hold, [&](KRText) { return ++seen < 2; });
  EXPECT_EQ(seen, 2U);
}

TEST(ABPerson, AnswersTheSameStoredValueEachTime) {
  const auto person = richPerson();
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    const auto first = person->valueByProperty(property);
    EXPECT_EQ(first.get(), person->valueByPropertyName(property->name()).get());
    EXPECT_EQ(first != nullptr, person->record().has(static_cast<uint8_t>(property->ordinal())) ||
                                    property->ordinal() == KROrdinal::Name);
  }
  EXPECT_FALSE(person->isChanged());
}

TEST(ABPerson, MakesOneStoredValueForManyThreads) {
  for (int round = 0; round < 50; ++round) {
    const auto person = richPerson();
    std::vector<std::thread> threads;
    std::vector<std::vector<KRRef<KRStoredValue>>> values(4);
    for (auto& each : values) {
      threads.emplace_back([&each, &person] {
        for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
          each.push_back(person->valueByProperty(property));
          KRHold hold;
          static_cast<void>(person->readText(property->ordinal(), hold));
          static_cast<void>(person->entryCount(property->ordinal()));
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
    for (const auto& each : values) EXPECT_TRUE(each == values[0]);
  }
}

TEST(ABPerson, KeepsTheVeryValueThatIsSet) {
  const auto person = richPerson();
  const KRProperty* note = KRProperty::propertyWithOrdinal(KROrdinal::Note);
  const KRRef<KRStoredValue> value = krSingleValue("new"_kr, *note);
  person->setValue(value, note);
  EXPECT_EQ(person->valueByProperty(note).get(), value.get());
  KRHold hold;
  EXPECT_EQ(person->readText(KROrdinal::Note, hold), KRText("new"));
  EXPECT_TRUE(person->isChanged());
  EXPECT_TRUE(person->isChanged(KROrdinal::Note));
  EXPECT_FALSE(person->isChanged(KROrdinal::Phone));
  EXPECT_EQ(person->card(), krRichCard("3.0"));
}

TEST(ABPerson, ReadsAValueThatWasChangedAfterItWasHandedOut) {
  const auto person = richPerson();
  const auto stored = person->valueByPropertyName(KRProPertyNote);
  static_cast<KRMutableSingleValue&>(*stored).setValue("other"_kr);
  KRHold hold;
  EXPECT_EQ(person->readText(KROrdinal::Note, hold), KRText("other"));
}

TEST(ABPerson, ClearsAPropertyThatIsSetToNothing) {
  const auto person = richPerson();
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    person->setValue(KRRef<KRStoredValue>(), property);
    EXPECT_TRUE(person->valueByProperty(property) == nullptr);
  }
  EXPECT_EQ(krShownByReading(*person), "");
  EXPECT_TRUE(person->notNullValueProperty().empty());
  EXPECT_TRUE(person->imageData() == nullptr);
  EXPECT_EQ(person->displayName(), "");
  person->setRecord(KRCardRecord(person->record()));
  EXPECT_FALSE(person->isChanged());
  EXPECT_EQ(person->displayName(), "Jörg Karl,Maria Weber");
}

TEST(ABPerson, KeepsValuesUnderOtherNames) {
  const auto person = richPerson();
  const KRRef<KRStoredValue> value = krMake<KRMutableSingleValue>();
  EXPECT_TRUE(person->valueByPropertyName("shoe size"_kr) == nullptr);
  person->setValue(value, "shoe size"_kr);
  EXPECT_EQ(person->valueByPropertyName("shoe size"_kr).get(), value.get());
  EXPECT_TRUE(person->isChanged());
  person->setValue(KRRef<KRStoredValue>(), "shoe size"_kr);
  EXPECT_TRUE(person->valueByPropertyName("shoe size"_kr) == nullptr);
  person->setValue(value, KRString());
  EXPECT_TRUE(person->valueByPropertyName(KRString()) == nullptr);
}

TEST(ABPerson, KnowsTheMainEntries) {
  const auto person = personOf(krCard({"TEL:1", "TEL;PREF=2:2", "TEL;TYPE=pref:3", "EMAIL:a", "EMAIL:b"}));
  EXPECT_EQ(person->mainPhone()->phoneNumber(), "3");
  EXPECT_EQ(person->mainEmail()->email(), "a");
}

TEST(ABPerson, ShowsCompaniesByTheirCompany) {
  const auto person = personOf(krCard({"N:Lee;Ann", "ORG:Acme", "X-ABShowAs:COMPANY", "TITLE:Boss"}));
  EXPECT_TRUE(person->isOrganization());
  EXPECT_EQ(person->displayName(), "Ann Lee");
  EXPECT_EQ(person->showName(), "Acme");
  EXPECT_EQ(person->companyName(), "Acme");
  EXPECT_EQ(person->jobTitle(), "Boss");
  const auto empty = krMake<ABPerson>();
  EXPECT_FALSE(empty->isOrganization());
  EXPECT_EQ(empty->showName(), "");
  EXPECT_EQ(empty->companyName(), "");
  EXPECT_TRUE(empty->jobTitle().isNothing());
}

TEST(ABPerson, TransliteratesTheNamesShown) {
  const auto person = personOf(krCard({"N:王;小明", "ORG:中国", "X-ABShowAs:COMPANY"}));
  EXPECT_EQ(person->nameChineesPinyin(), "WANG XIAO MING");
  EXPECT_EQ(person->showNameChineesPinyin(), "ZHONG GUO");
}

TEST(ABPerson, DecodesThePictureOnRequest) {
  const auto person = personOf(krCard({"PHOTO;ENCODING=b:QUJDRA=="}));
  EXPECT_EQ(person->imageData()->bytes(), "ABCD");
  EXPECT_EQ(person->thumbnail()->bytes(), "ABCD");
  person->setThumbnail(krMake<KRData>("xy"));
  EXPECT_EQ(person->imageData()->bytes(), "xy");
}

TEST(ABPerson, AnswersTheRecordInterface) {
  const auto person = richPerson();
  EXPECT_EQ(person->valueForProperty(kABFirstNameProperty).text(), KRText("Jörg"));
  EXPECT_EQ(person->valueForProperty(kABLastNameProperty).text(), KRText("Weber"));
  EXPECT_EQ(person->valueForProperty(kABTitleProperty).text(), KRText("Dr."));
  ASSERT_NE(person->valueForKey(kABPhoneProperty).list(), nullptr);
  EXPECT_EQ(person->valueForKey(kABPhoneProperty).list()->count(), 2U);
  EXPECT_EQ(person->valueForKey(kABAddressProperty).list()->count(), 1U);
  EXPECT_TRUE(personOf(krCard({"N:a"}))->valueForProperty(kABPhoneProperty).isNothing());
  const KRStringList& keys = ABPerson::properties();
  EXPECT_EQ(std::set<std::string_view>([&] {
              std::set<std::string_view> names;
              for (const KRString& key : keys) names.insert(key.view());
              return names;
            }())
                .size(),
            keys.size());
  EXPECT_EQ(keys.size(), KRProperty::StandardPropertyArray().size() + 3);
}

TEST(ABPerson, BelongsToItsBookAsLongAsTheBookLives) {
  KRRef<IKRPerson> person;
  {
    const KRCardsRead read = krReadCards(krCard({"N:a"}));
    person = KRRef<IKRPerson>(read.book->allPersons().at(0));
    EXPECT_EQ(person->addressBookID(), "book");
  }
  EXPECT_TRUE(person->addressBookID().isNothing());
  EXPECT_EQ(person->displayName(), "a");
}

TEST(ABPerson, OutlivesItsBlockNeighboursAndKeepsTheirText) {
  KRString name;
  {
    const auto person = personOf(krCard({"N:Lee;Ann"}));
    const auto stored = person->valueByPropertyName(KRProPertyName);
    name = static_cast<KRMutableSingleValue&>(*stored).value().as<KRObjectPersonName>()->last();
  }
  EXPECT_EQ(name, "Lee");
}

TEST(ABPerson, IsMadeOfOneWholeCardOnly) {
  EXPECT_TRUE(personOf("") == nullptr);
  EXPECT_TRUE(personOf("N:a\nEND:VCARD") == nullptr);
  EXPECT_TRUE(personOf("BEGIN:VCARD\nN:a") == nullptr);
  EXPECT_TRUE(personOf("junk\n" + krCard({"N:a"})) == nullptr);
  EXPECT_TRUE(personOf(krCard({"KIND:group"}) + krCard({"N:a"})) == nullptr);
  EXPECT_TRUE(personOf("BEGIN:VCARD\nN:a\n" + krCard({"N:b"})) == nullptr);
  EXPECT_EQ(personOf(krCard({"N:a"}) + krCard({"N:b"}))->displayName(), "a");
  EXPECT_EQ(personOf("BEGIN:VCARD\nN:a\nEND:VCARD")->displayName(), "a");
}

TEST(ABPerson, SpillsLabelsThatTheTableDoesNotTake) {
  const std::string label(KRLabelTable::kLongestName + 10, 'l');
  const auto person = personOf(krCard({"i.TEL;TYPE=HOME:1", "i.X-ABLabel:" + label, "TEL;TYPE=" + label + ":2"}));
  KRHold hold;
  std::vector<std::string> labels;
  person->readEntries(KROrdinal::Phone, hold, [&](const KREntryView& entry) {
    labels.emplace_back(entry.label.view());
    return true;
  });
  EXPECT_EQ(labels, (std::vector<std::string>{label, label}));
  EXPECT_EQ(krShownByReading(*person), krShownByValues(*person));
}

std::vector<std::string> IDsOf(const KRCardsRead& read) {
  std::vector<std::string> IDs;
  for (size_t i = 0; i < read.count(); ++i) IDs.emplace_back(read.person(i).ID().view());
  return IDs;
}

TEST(ABPerson, TakesItsIdentifierFromTheCard) {
  EXPECT_EQ(IDsOf(krReadCards(krCard({"N:a", "UID:urn:uuid:1"}) + krCard({"N:b", "UID: x "}))),
            (std::vector<std::string>{"urn:uuid:1", " x "}));
}

TEST(ABPerson, MakesAnIdentifierFromTheTextOfACardWithoutOne) {
  const std::string ID(personOf("BEGIN:VCARD\r\nN:Lee;Ann\r\nEND:VCARD\r\n")->ID().view());
  // A fixed number: it must be the same on every machine and for ever.
  EXPECT_EQ(ID, "151077fcb8de17bd817b6082a79c4aed");
  EXPECT_EQ(ID, personOf("BEGIN:VCARD\nN:Le\n e;Ann\nEND:VCARD")->ID().view());
  EXPECT_NE(ID, personOf("BEGIN:VCARD\nN:Lee;Anna\nEND:VCARD")->ID().view());
}

TEST(ABPerson, KeepsAnIdentifierMadeFromTheCardWhenTheCardIsReplaced) {
  const auto book = krMake<KRAddressBook>("b"_kr, "b"_kr);
  const auto person = personOf(krCard({"N:Lee;Ann"}));
  book->addPerson(person.get());
  const KRString before = person->ID();
  person->setRecord(personOf(krCard({"N:Lee;Bo"}))->record());
  EXPECT_EQ(person->displayName(), "Bo Lee");
  EXPECT_EQ(person->ID(), before);
}

TEST(ABPerson, GivesLaterHoldersOfAnIdentifierASuffix) {
  const std::string same = krCard({"N:a", "UID:1"});
  EXPECT_EQ(IDsOf(krReadCards(same + same + krCard({"N:b", "UID:1-2"}) + same)),
            (std::vector<std::string>{"1", "1-2", "1-2-2", "1-3"}));
}

TEST(ABPerson, KnowsWhetherItsIdentifierIsThatOfItsCard) {
  const std::string same = krCard({"N:a", "UID:1"});
  const std::string nameless = krCard({"N:b"});
  const KRCardsRead read = krReadCards(same + same + nameless + nameless);
  const bool kExpected[] = {true, false, true, false};
  for (size_t i = 0; i < read.count(); ++i) {
    // Asked before anything else has asked for an identifier, too.
    EXPECT_EQ(read.person(i).isIDOfCard(), kExpected[i]) << i;
    EXPECT_EQ(read.person(i).ID() == read.person(i).baseID(), kExpected[i]) << i;
  }
  const auto alone = personOf(same);
  EXPECT_TRUE(alone->isIDOfCard());
  alone->setID("2"_kr);
  EXPECT_FALSE(alone->isIDOfCard());
  EXPECT_FALSE(krMake<ABPerson>()->isIDOfCard());
}

TEST(ABPerson, KeepsItsIdentifierWhenOthersComeAndGo) {
  const KRCardsRead read = krReadCards(krCard({"N:a", "UID:1"}) + krCard({"N:b", "UID:1"}));
  const KRRef<IKRPerson> first(read.book->allPersons().at(0));
  const KRRef<IKRPerson> second(read.book->allPersons().at(1));
  EXPECT_EQ(second->ID(), "1-2");
  read.book->removePersons(KRPersonArray(first));
  EXPECT_EQ(second->ID(), "1-2");
  const auto third = personOf(krCard({"N:c", "UID:1"}));
  read.book->addPerson(third.get());
  read.book->addPerson(first.get());
  EXPECT_EQ(first->ID(), "1");
  EXPECT_EQ(third->ID(), "1-3");
  EXPECT_EQ(read.book->newPerson()->ID().size(), 36U);
}

TEST(ABPerson, MakesManyEqualIdentifiersUniqueInLinearTime) {
  std::string text;
  for (int i = 0; i < 50'000; ++i) text += "BEGIN:VCARD\nUID:x\nEND:VCARD\n";
  const std::vector<std::string> IDs = IDsOf(krReadCards(text));
  EXPECT_EQ(std::set<std::string>(IDs.begin(), IDs.end()).size(), IDs.size());
  EXPECT_EQ(IDs.back(), "x-50000");
}

TEST(ABPerson, GivesEachNewPersonAnIdentifierOfItsOwn) {
  EXPECT_FALSE(krMake<ABPerson>()->ID() == krMake<ABPerson>()->ID());
}

TEST(ABPerson, KnowsItsGroups) {
  const auto person = krMake<ABPerson>();
  EXPECT_TRUE(person->parentGroups().empty());
  person->setParentGroups({krMake<KRGroup>("g"_kr, "Group"_kr)});
  ASSERT_EQ(person->groups().size(), 1U);
  EXPECT_EQ(person->parentGroups()[0]->uniqueId(), "g");
}

}  // namespace
