#include "detectors/KRPersonKey.h"

#include <gtest/gtest.h>

#include "contacts/model/KRObjectAddress.h"
#include "contacts/model/KRObjectInstantMessage.h"
#include "tests/contacts/ModelSamples.h"
#include "tests/support/KRPersonSketch.h"

namespace {

std::string keyOf(const IKRPerson& person, KRText digest = {}) {
  KRHold hold;
  std::string key;
  krAppendPersonKey(key, person, digest, hold);
  return key;
}

template <class Person>
class KRPersonKeyTest : public testing::Test {};
TYPED_TEST_SUITE(KRPersonKeyTest, KRPersonKinds);

TYPED_TEST(KRPersonKeyTest, WritesWhatIsThereInStandardOrder) {
  const auto person = krPerson<TypeParam>({.first = "Ann"_kr,
                                           .last = ""_kr,
                                           .title = "Dr"_kr,
                                           .nickname = "Al"_kr,
                                           .note = "x"_kr,
                                           .company = "Acme"_kr,
                                           .phones = {"1"_kr, KRString()},
                                           .emails = {"a@b"_kr}});
  EXPECT_EQ(keyOf(*person),
            "name:fisrt:Ann\tmiddle:(null)\tlast:\tnickname:Alphone:home:1\thome:(null)\temail:home:a@b\tcompany:Acme"
            "title:Drnote:x");
}

TYPED_TEST(KRPersonKeyTest, StartsAreTheFirstBytesOfTheWhole) {
  const auto person = krPerson<TypeParam>(
      {.first = "Ann"_kr, .company = "Acme"_kr, .phones = {"1"_kr, "2"_kr}, .isOrganization = true});
  const std::string whole = keyOf(*person);
  for (size_t size = 0; size <= whole.size() + 2; ++size) {
    KRHold hold;
    std::string start = "before";
    krAppendPersonKeyStart(start, *person, size, hold);
    EXPECT_EQ(start, "before" + whole.substr(0, size)) << size;
  }
}

TYPED_TEST(KRPersonKeyTest, WritesNothingForAPersonThatHoldsNothing) {
  EXPECT_EQ(keyOf(*krPerson<TypeParam>({})), "");
}

TYPED_TEST(KRPersonKeyTest, EndsWithTheDigestAndTheMarkOfOrganisations) {
  EXPECT_EQ(keyOf(*krPerson<TypeParam>({.company = "A"_kr, .isOrganization = true}), "0123"),
            "company:AisOrganization:YES0123:OrgString##");
}

TYPED_TEST(KRPersonKeyTest, WritesEachKindOfValueInItsOwnWay) {
  const KRRef<IKRPerson> person = krMake<TypeParam>();
  auto tags = krLabelled(KRValueList::ofTexts({"family"_kr, "tennis"_kr}), KRValueType::TextList);
  person->setValue(std::move(tags), KRProPertyTags);
  person->setValue(krLabelled(*KRDate::make(1990, 3, 2), KRValueType::Date), KRProPertyBirthday);
  auto accounts = krMake<KRMutableMultipleValue>();
  accounts->addValue(
      krLabelled(krMake<KRObjectInstantMessage>("ann"_kr, KRInstantMessageServer::serverWithName("xmpp")),
                 KRValueType::InstantMessage));
  accounts->addValue(krLabelled(krMake<KRObjectInstantMessage>(KRString(), nullptr), KRValueType::InstantMessage));
  person->setValue(std::move(accounts), KRProPertyInstantMessage);
  auto addresses = krMake<KRMutableMultipleValue>();
  auto address = krMake<KRObjectAddress>();
  address->setStringValue("Exeter"_kr, "city"_kr);
  address->setStringValue("2, left"_kr, "floor"_kr);
  addresses->addValue(krLabelled(address, KRValueType::Address));
  auto withCode = krMake<KRObjectAddress>();
  withCode->setCountryCode("gb"_kr);
  auto unlabelled = krLabelled(withCode, KRValueType::Address);
  unlabelled->setLabel({});
  addresses->addValue(unlabelled);
  person->setValue(std::move(addresses), KRProPertyAddress);
  auto others = krMake<KRMutableMultipleValue>();
  others->addValue(krLabelled("x"_kr, KRValueType::Text));
  person->setValue(std::move(others), KRProPertyOther);
  EXPECT_EQ(keyOf(*person),
            "address:home:code:(null)\taddress:city: Exeter, floor: 2\\, left\t(null):code:gb\taddress:\t"
            "instantMessage:home:server:xmpp\tuserName:ann\thome:userName:(null)\t"
            "birthday:1990-03-02tags:family,tennis,other:home:x\t");
}

TYPED_TEST(KRPersonKeyTest, TellsAMultipleValueWithoutEntriesFromNone) {
  const KRRef<IKRPerson> person = krMake<TypeParam>();
  person->setValue(krMake<KRMutableMultipleValue>(), KRProPertyPhone);
  EXPECT_EQ(keyOf(*person), "phone:");
}

TYPED_TEST(KRPersonKeyTest, WritesValuesOfAnotherKindByTheirTextForms) {
  const KRRef<IKRPerson> person = krMake<TypeParam>();
  person->setValue(krLabelled(krMake<KRData>("ab"), KRValueType::Data), KRProPertyNote);
  auto addresses = krMake<KRMutableMultipleValue>();
  addresses->addValue(krLabelled("Exeter"_kr, KRValueType::Text));
  addresses->addValue(krLabelled({}, KRValueType::Text));
  person->setValue(std::move(addresses), KRProPertyAddress);
  EXPECT_EQ(keyOf(*person), "address:home:Exeter\thome:code:(null)\taddress:\tnote:<6162>");
}

// A value that no property holds well still gives one text, the same for the same content.
TYPED_TEST(KRPersonKeyTest, WritesAnyStoredValue) {
  ModelSamples samples(5);
  for (int round = 0; round < 500; ++round) {
    const auto& all = KRProperty::StandardPropertyArray();
    const KRProperty& property = *all[samples.upTo(all.size() - 1)];
    const KRRef<IKRPerson> person = krMake<TypeParam>();
    person->setValue(samples.anyStored(), &property);
    const std::string key = keyOf(*person);
    if (property.ordinal() != KROrdinal::Thumbnail) EXPECT_TRUE(key.starts_with(property.name().view()));
    EXPECT_EQ(key, keyOf(*person));
  }
}

std::string randomCard(std::mt19937& random) {
  const auto line = [&](std::initializer_list<const char*> texts) {
    const char* text = texts.begin()[random() % texts.size()];
    return *text == '\0' ? std::string() : std::string(text) + "\r\n";
  };
  std::string card = "BEGIN:VCARD\r\nVERSION:3.0\r\n";
  card += line({"", "N:Lee;Ann;;;", "N:;;;;", "N:Lee;;;Dr.;Jr.", "FN:Ann Lee", "N:Lee;Ann;Mary;;"});
  card += line({"", "X-ABShowAs:COMPANY"}) + line({"", "ORG:Acme;Sales", "ORG:Acme"}) + line({"", "TITLE:Clerk"});
  card += line({"", "NICKNAME:Al"}) + line({"", "NOTE:Likes tea.", "NOTE:two\\nlines"}) + line({"", "ROLE:Boss"});
  card +=
      line({"", "BDAY:1990-03-02", "BDAY:--03-02", "BDAY:in spring"}) + line({"", "CATEGORIES:a,b", "CATEGORIES:a"});
  card += line({"", "X-PHONETIC-FIRST-NAME:An"}) + line({"", "URL:https://a.example", "item1.URL:x"});
  for (auto i = random() % 3; i > 0; --i) {
    card += line({"TEL;TYPE=CELL:1", "TEL;TYPE=HOME:1", "item2.TEL:2\r\nitem2.X-ABLabel:Summer house", "TEL:"});
    card += line({"EMAIL;TYPE=WORK:a@b", "EMAIL:a@b", "EMAIL;TYPE=WORK,PREF:c@d"});
    card += line({"ADR;TYPE=HOME:;;1 Main Road;Exeter;;;United Kingdom", "ADR:;;;;;;",
                  "item3.ADR:;;a\\,b;;;;\r\nitem3.X-ABADR:de"});
    card += line({"IMPP:xmpp:ann@a.example", "IMPP;X-SERVICE-TYPE=Jabber:xmpp:bob", "X-SKYPE:ann", "X-JABBER:ann"});
    card +=
        line({"", "item4.X-ABDATE:2001-02-03", "item5.X-ABRELATEDNAMES:Bob", "X-SOCIALPROFILE:https://s.example/a"});
  }
  card += line({"", "PHOTO;ENCODING=b;TYPE=PNG:QUJD"});
  return card + "END:VCARD\r\n";
}

TEST(KRPersonKeyCards, ReadsTheSameFromACardAndFromTheValuesMadeOfIt) {
  std::mt19937 random(17);
  std::set<std::string> keys;
  for (int round = 0; round < 3000; ++round) {
    const std::string text = randomCard(random);
    const auto card = ABPerson::initWithVCardRepresentation(KRText(text));
    ASSERT_TRUE(card) << text;
    const std::string fromViews = keyOf(*card);
    KRHostPerson host;
    for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
      host.setValue(card->valueByProperty(property), property->name());
    }
    EXPECT_EQ(fromViews, keyOf(host)) << text;
    // By now the card has handed its values out and is read through them.
    EXPECT_EQ(fromViews, keyOf(*card)) << text;
    keys.insert(fromViews);
  }
  EXPECT_GT(keys.size(), 2000U);
}

}  // namespace
