#include "detectors/KRIssueFindDuplicateAddress.h"

#include <gmock/gmock.h>

#include "contacts/model/KRObjectAddress.h"
#include "tests/support/KRScan.h"

namespace {

using testing::ElementsAre;

struct Address {
  KRString street{};
  KRString city{};
  KRString code{};
  KRString further{};
  KRString label = "home"_kr;
};

template <class Person>
class KRIssueFindDuplicateAddressTest : public testing::Test {
 protected:
  static KRRef<IKRPerson> person(const std::vector<Address>& addresses) {
    const auto person = krPerson<Person>({});
    auto entries = krMake<KRMutableMultipleValue>();
    for (const Address& each : addresses) {
      auto address = krMake<KRObjectAddress>();
      address->setStringValue(each.street, "street"_kr);
      address->setStringValue(each.city, "city"_kr);
      address->setStringValue(each.further, "floor"_kr);
      address->setCountryCode(each.code);
      entries->addValue(krLabelled(std::move(address), KRValueType::Address, each.label));
    }
    person->setValue(std::move(entries), KRProPertyAddress);
    return person;
  }
  static KRScan scan(const std::vector<std::vector<Address>>& contacts) {
    std::vector<KRRef<IKRPerson>> persons;
    for (const auto& addresses : contacts) persons.push_back(person(addresses));
    return KRScan(std::move(persons), [](const KRPersonList& list, const KRProgress& progress) {
      return KRIssueFindDuplicateAddress().find(&list, progress);
    });
  }
};
TYPED_TEST_SUITE(KRIssueFindDuplicateAddressTest, KRPersonKinds);

TYPED_TEST(KRIssueFindDuplicateAddressTest, FindsContactsThatHoldAnAddressTwice) {
  const Address mill{.street = "7 Mill Road"_kr, .city = "Cambridge"_kr};
  const Address lane{.street = "14 Bramble Lane"_kr};
  const KRScan scan = this->scan({{mill, lane}, {mill, lane, mill}, {}, {mill}});
  EXPECT_THAT(scan.found(), ElementsAre(1));
  EXPECT_EQ(scan.only()->describe(), "This Contact has duplicate addresses.");
  EXPECT_TRUE(scan.only()->info().isNothing());
  EXPECT_THAT(scan.progress(), ElementsAre(0.0, 25.0, 50.0, 75.0));
}

TYPED_TEST(KRIssueFindDuplicateAddressTest, ComparesEveryPartButTheLabel) {
  const Address mill{.street = "7 Mill Road"_kr, .city = "Cambridge"_kr, .code = "gb"_kr, .further = "2"_kr};
  Address other = mill;
  other.label = "work"_kr;
  EXPECT_THAT(this->scan({{mill, other}}).found(), ElementsAre(0));
  for (KRString Address::*const part : {&Address::street, &Address::city, &Address::code, &Address::further}) {
    for (const KRString& text : {KRString("x"), KRString()}) {
      other = mill;
      other.*part = text;
      EXPECT_FALSE(this->scan({{mill, other}}).context()) << (mill.*part).view();
    }
  }
}

TYPED_TEST(KRIssueFindDuplicateAddressTest, FindsTwoEmptyAddressesButNotOne) {
  EXPECT_FALSE(this->scan({{{}}}).context());
  EXPECT_THAT(this->scan({{{}, {}}}).found(), ElementsAre(0));
}

TYPED_TEST(KRIssueFindDuplicateAddressTest, PassesEntriesWithoutAnAddressOver) {
  const auto person = krPerson<TypeParam>({});
  auto entries = krMake<KRMutableMultipleValue>();
  for (int i = 0; i < 2; ++i) entries->addValue(krLabelled({}, KRValueType::Address));
  person->setValue(std::move(entries), KRProPertyAddress);
  KRPersonList list;
  list.append(person);
  EXPECT_FALSE(KRIssueFindDuplicateAddress().find(&list, [](double) {}));
}

TYPED_TEST(KRIssueFindDuplicateAddressTest, FindsTheOnlyRepetitionAmongMany) {
  std::vector<Address> many;
  for (int i = 0; i < 2'000; ++i) many.push_back({.street = KRString(std::to_string(i)), .city = "x"_kr});
  EXPECT_FALSE(this->scan({many}).context());
  many.back().street = "5"_kr;
  EXPECT_THAT(this->scan({many}).found(), ElementsAre(0));
}

TEST(KRIssueFindDuplicateAddressCards, ReadsTheAddressesOfACard) {
  const auto find = [](const char* second) {
    const std::string card = std::string("BEGIN:VCARD\r\nVERSION:3.0\r\nN:Castle;Henry;;;\r\n") +
                             "ADR;TYPE=HOME:;;7 Mill Road;Cambridge;;CB1 2AA;\r\n" + second + "END:VCARD\r\n";
    KRPersonList list;
    list.append(ABPerson::initWithVCardRepresentation(KRText(card)).get());
    return KRIssueFindDuplicateAddress().find(&list, [](double) {}) != nullptr;
  };
  EXPECT_TRUE(find("ADR;TYPE=WORK:;;7 Mill Road;Cambridge;;CB1 2AA;\r\n"));
  EXPECT_FALSE(find("ADR;TYPE=WORK:;;7 mill Road;Cambridge;;CB1 2AA;\r\n"));
  EXPECT_FALSE(find(""));
}

}  // namespace
