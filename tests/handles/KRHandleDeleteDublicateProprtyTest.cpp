#include "handles/KRHandleDeleteDublicateProprty.h"

#include <gmock/gmock.h>

#include <random>
#include <string>

#include "issues/KRIssueNames.h"
#include "tests/support/KRFix.h"

namespace {

using testing::ElementsAre;

KRRef<KRObjectAddress> address(const KRString& street, const KRString& code = "DE"_kr) {
  auto made = krMake<KRObjectAddress>();
  made->setStringValue(street, "street"_kr);
  made->setCountryCode(code);
  return made;
}

/// The labels of a person's entries, which tell which of them are left.
std::vector<std::string> labels(const IKRPerson& person, const KRString& property) {
  std::vector<std::string> names;
  const auto stored = person.valueByPropertyName(property);
  const auto* entries = dynamic_cast<const KRMutableMultipleValue*>(stored.get());
  for (size_t i = 0; entries != nullptr && i < entries->count(); ++i) {
    names.emplace_back(entries->valueAtIndex(i)->label()->name().view());
  }
  return names;
}

template <class Person>
class KRHandleDeleteDublicateProprtyTest : public testing::Test {
 protected:
  /// A person with the values under the property, labelled "0", "1" ...
  static KRRef<IKRPerson> holding(const KRString& property, const std::vector<KRValue>& values) {
    auto entries = krMake<KRMutableMultipleValue>();
    const int32_t type = KRProperty::propertyWithName(property)->subValueType();
    for (size_t i = 0; i < values.size(); ++i) {
      entries->addValue(krLabelled(values[i], type, KRString(std::to_string(i))));
    }
    const auto person = krPerson<Person>({.first = "Ann"_kr});
    person->setValue(entries, property);
    return person;
  }

  static std::vector<std::string> left(const KRString& issueName, const KRString& property,
                                       const std::vector<KRValue>& values) {
    const KRFix fix(issueName, holding(property, values));
    krMake<KRHandleDeleteDublicateProprty>()->fix(fix.finding());
    EXPECT_TRUE(fix.isGone());
    return labels(fix.person(), property);
  }
  static std::vector<std::string> leftPhones(const std::vector<KRString>& numbers) {
    std::vector<KRValue> values;
    for (const KRString& number : numbers) values.emplace_back(krMake<KRObjectPhone>(number));
    return left(KRIssueDuplicatePhoneNumber, KRProPertyPhone, values);
  }
  static std::vector<std::string> leftEmails(const std::vector<KRString>& texts) {
    std::vector<KRValue> values;
    for (const KRString& text : texts) values.emplace_back(krMake<KRObjectEmail>(text));
    return left(KRIssueDuplicateEmailAddress, KRProPertyEmail, values);
  }
};
TYPED_TEST_SUITE(KRHandleDeleteDublicateProprtyTest, KRPersonKinds);

TYPED_TEST(KRHandleDeleteDublicateProprtyTest, KeepsTheFirstOfEqualPhonesWithItsLabelAndPhonesWrittenDifferently) {
  EXPECT_THAT(this->leftPhones({"555 1234"_kr, "555 1234"_kr, "5551234"_kr}), ElementsAre("0", "2"));
}

TYPED_TEST(KRHandleDeleteDublicateProprtyTest, KeepsEmailsThatDifferInCase) {
  EXPECT_THAT(this->leftEmails({"ann@example.org"_kr, "Ann@example.org"_kr}), ElementsAre("0", "1"));
  EXPECT_THAT(this->leftEmails({"a@b"_kr, "c@d"_kr, "a@b"_kr, "c@d"_kr, "e@f"_kr}), ElementsAre("0", "1", "4"));
}

TYPED_TEST(KRHandleDeleteDublicateProprtyTest, KeepsOnlyTheFirstOfEqualEntriesInARow) {
  EXPECT_THAT(this->leftPhones({"1"_kr, "1"_kr, "1"_kr}), ElementsAre("0"));
  EXPECT_THAT(this->leftPhones({"1"_kr, "1"_kr, "1"_kr, "2"_kr, "2"_kr, "1"_kr}), ElementsAre("0", "3"));
}

TYPED_TEST(KRHandleDeleteDublicateProprtyTest, RemovesOnlyAddressesThatAreEqualInAllFields) {
  EXPECT_THAT(this->left(KRIssueDuplicateAddress, KRProPertyAddress,
                         {address("Elm 1"_kr), address("Elm 1"_kr), address("Elm 1"_kr, "US"_kr), address("Elm 2"_kr)}),
              ElementsAre("0", "2", "3"));
}

TYPED_TEST(KRHandleDeleteDublicateProprtyTest, TakesEmptyTextsForEqual) {
  EXPECT_THAT(this->leftPhones({""_kr, ""_kr}), ElementsAre("0"));
}

TYPED_TEST(KRHandleDeleteDublicateProprtyTest, KeepsEveryEntryWithoutText) {
  EXPECT_THAT(this->leftPhones({KRString(), KRString(), "1"_kr, "1"_kr}), ElementsAre("0", "1", "2"));
  EXPECT_THAT(this->leftEmails({KRString(), KRString()}), ElementsAre("0", "1"));
}

TYPED_TEST(KRHandleDeleteDublicateProprtyTest, ChangesNothingForAnotherIssue) {
  const auto phone = krMake<KRObjectPhone>("1"_kr);
  EXPECT_THAT(this->left(KRIssueBlankName, KRProPertyPhone, {phone, phone}), ElementsAre("0", "1"));
  EXPECT_THAT(this->left(KRIssueDuplicateEmailAddress, KRProPertyPhone, {phone, phone}), ElementsAre("0", "1"));
}

TYPED_TEST(KRHandleDeleteDublicateProprtyTest, LeavesAPersonWithoutTheFieldWithoutIt) {
  const KRFix fix(KRIssueDuplicatePhoneNumber, krPerson<TypeParam>({.first = "Ann"_kr}));
  krMake<KRHandleDeleteDublicateProprty>()->fix(fix.finding());
  EXPECT_TRUE(fix.isGone());
  EXPECT_FALSE(fix.person().valueByPropertyName(KRProPertyPhone));
}

TYPED_TEST(KRHandleDeleteDublicateProprtyTest, ChangesACopyAndNotTheValueThatThePersonHeld) {
  const auto person = this->holding(KRProPertyPhone, {krMake<KRObjectPhone>("1"_kr), krMake<KRObjectPhone>("1"_kr)});
  const auto before = person->valueByPropertyName(KRProPertyPhone);
  const KRFix fix(KRIssueDuplicatePhoneNumber, person);
  krMake<KRHandleDeleteDublicateProprty>()->fix(fix.finding());
  EXPECT_EQ(dynamic_cast<const KRMutableMultipleValue&>(*before).count(), 2U);
  EXPECT_THAT(labels(*person, KRProPertyPhone), ElementsAre("0"));
}

// The walk by hash against the walk of the contract, which removes each repeat as it comes.
TYPED_TEST(KRHandleDeleteDublicateProprtyTest, AgreesWithTheSlowWalkOnRandomEntries) {
  const auto handle = krMake<KRHandleDeleteDublicateProprty>();
  std::mt19937 random(20240607);
  for (int round = 0; round < 200; ++round) {
    std::vector<KRString> numbers(random() % 12);
    for (KRString& number : numbers) {
      const auto pick = random() % 5;
      number = pick == 4 ? KRString() : KRString(std::string(pick, '7'));
    }
    std::vector<KRValue> kept;
    std::vector<std::string> expected;
    for (size_t i = 0; i < numbers.size(); ++i) {
      const KRValue value(krMake<KRObjectPhone>(numbers[i]));
      if (handle->isExistInArray(kept, value, KRIssueDuplicatePhoneNumber)) continue;
      kept.push_back(value);
      expected.push_back(std::to_string(i));
    }
    ASSERT_EQ(this->leftPhones(numbers), expected);
  }
}

TEST(KRHandleDeleteDublicateProprty, ComparesValuesToTheLetter) {
  const auto handle = krMake<KRHandleDeleteDublicateProprty>();
  const KRObjectPhone phone("1 2"_kr), same("1 2"_kr), other("12"_kr), none{KRString()};
  EXPECT_TRUE(handle->isEqualPhoneObject(&phone, &same));
  EXPECT_FALSE(handle->isEqualPhoneObject(&phone, &other));
  EXPECT_FALSE(handle->isEqualPhoneObject(&none, &none));
  EXPECT_FALSE(handle->isEqualPhoneObject(&phone, nullptr));
  EXPECT_FALSE(handle->isEqualPhoneObject(nullptr, nullptr));
  const KRObjectEmail email("a@b"_kr), upper("A@b"_kr), noText{KRString()};
  EXPECT_TRUE(handle->isEqualEmailObject(&email, &email));
  EXPECT_FALSE(handle->isEqualEmailObject(&email, &upper));
  EXPECT_FALSE(handle->isEqualEmailObject(&noText, &noText));
  EXPECT_FALSE(handle->isEqualEmailObject(nullptr, &email));
  const auto elm = address("Elm 1"_kr), alike = address("Elm 1"_kr), oak = address("Oak 1"_kr);
  EXPECT_TRUE(handle->isEqualAdressObject(elm.get(), alike.get()));
  EXPECT_FALSE(handle->isEqualAdressObject(elm.get(), oak.get()));
  EXPECT_FALSE(handle->isEqualAdressObject(elm.get(), nullptr));
  EXPECT_FALSE(handle->isEqualAdressObject(nullptr, elm.get()));
}

TEST(KRHandleDeleteDublicateProprty, LooksValuesUpByTheRuleOfTheIssue) {
  const auto handle = krMake<KRHandleDeleteDublicateProprty>();
  const KRValue phone(krMake<KRObjectPhone>("1"_kr));
  const KRValue email(krMake<KRObjectEmail>("1"_kr));
  const KRValue home(address("Elm 1"_kr));
  const std::vector<KRValue> all{email, home, phone};
  EXPECT_TRUE(handle->isExistInArray(all, phone, KRIssueDuplicatePhoneNumber));
  EXPECT_TRUE(handle->isExistInArray(all, email, KRIssueDuplicateEmailAddress));
  EXPECT_TRUE(handle->isExistInArray(all, home, KRIssueDuplicateAddress));
  EXPECT_FALSE(handle->isExistInArray(all, phone, KRIssueDuplicateEmailAddress));
  EXPECT_FALSE(handle->isExistInArray(all, phone, KRIssueBlankName));
  EXPECT_FALSE(handle->isExistInArray(all, phone, KRString()));
  EXPECT_FALSE(handle->isExistInArray({}, phone, KRIssueDuplicatePhoneNumber));
}

TEST(KRHandleDeleteDublicateProprty, ReportsOnce) {
  krExpectReportedOnce<KRHandleDeleteDublicateProprty>(KRIssueDuplicatePhoneNumber,
                                                       krPerson<KRHostPerson>({.phones = {"1"_kr, "1"_kr}}));
  krExpectReportedOnce<KRHandleDeleteDublicateProprty>(KRIssueBlankName, krPerson<KRHostPerson>({}));
}

TEST(KRHandleDeleteDublicateProprty, SaysWhatItDoes) {
  krExpectTexts<KRHandleDeleteDublicateProprty>({
      {KRIssueDuplicateAddress, "Delete duplicate addresses", "Delete duplicate addresses and keep only one."},
      {KRIssueDuplicatePhoneNumber, "Delete duplicate phone numbers",
       "Delete duplicate phone numbers and keep only one."},
      {KRIssueDuplicateEmailAddress, "Delete duplicate email addresses",
       "Delete duplicate email addresses and keep only one."},
      {KRIssueBlankName, "Delete the duplicate property", "Delete the duplicate property"},
  });
}

}  // namespace
