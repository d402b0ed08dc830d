#include "issues/KRSortNames.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "contacts/model/ABPerson.h"
#include "contacts/model/KRObjectPersonName.h"
#include "platform/KRCaseFolding.h"
#include "tests/support/KRNamedPerson.h"

namespace {

using Persons = std::vector<KRRef<IKRPerson>>;

KRRef<IKRPerson> record(std::string_view first, std::string_view middle, std::string_view last) {
  auto person = krMake<ABPerson>();
  const auto name = krMake<KRObjectPersonName>(KRString(first), KRString(middle), KRString(last));
  person->setValue(krSingleValue(name, *KRProperty::propertyWithOrdinal(KROrdinal::Name)), KRProPertyName);
  return person;
}

KRRef<IKRPerson> card(const std::string& name) {
  const std::string text = "BEGIN:VCARD\r\nVERSION:3.0\r\n" + name + "\r\nEND:VCARD\r\n";
  return ABPerson::initWithVCardRepresentation(KRText(std::string_view(text)));
}

std::vector<uint32_t> ordered(const Persons& persons) {
  KRSortNames names;
  names.reserve(persons.size());
  for (const auto& person : persons) names.add(*person);
  return names.order();
}

/// The order that follows from what each person answers, name by name.
std::vector<uint32_t> expectedOrder(const Persons& persons) {
  std::vector<std::string> keys;
  for (const auto& person : persons) {
    KRString name = person->nameChineesPinyin();
    if (name.isNothing()) name = person->displayName();
    keys.emplace_back(krCaselessKey(name).view());
  }
  std::vector<uint32_t> order(persons.size());
  std::iota(order.begin(), order.end(), 0U);
  std::stable_sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) { return keys[a] < keys[b]; });
  return order;
}

/// A record of a class of its own, which shows what it likes.
class NumberedRecord : public ABPerson {
 public:
  explicit NumberedRecord(KRString shown) : shown_(std::move(shown)) {}
  KRString displayName() const override { return shown_; }

 private:
  KRString shown_;
};

TEST(KRSortNames, AgreesWithTheNamesThatPersonsAnswer) {
  const std::vector<std::string> parts = {
      "",    "a",   "b",  "A", "Ann",        "ann",          "Lee, Jr.",   "Zo\u00EB", "\u738B",  "Smith,Ann",
      "O(x", "x)y", "  ", "[", "Maximilian", "Maximilianus", "von und zu", "\u0130",   "a\u0301", ".b"};
  std::mt19937 random(5);
  const auto pick = [&] { return std::string_view(parts[random() % parts.size()]); };
  // Few are sorted as they are, many by their first bytes first.
  for (const int count : {1500, 6000}) {
    Persons persons;
    for (int i = 0; i < count; ++i) persons.push_back(record(pick(), pick(), pick()));
    EXPECT_EQ(ordered(persons), expectedOrder(persons));
  }
}

TEST(KRSortNames, ReadsNamesFromCards) {
  const Persons persons = {card("N:Lee;Bo;;;"),        card("N:Lee;ann;Mary;;"), card("N:;;;;"),
                           card("N:\u738B;\u6D77;;;"), card("FN:Nobody"),        card("N:Adams;;;;")};
  EXPECT_EQ(ordered(persons), expectedOrder(persons));
}

TEST(KRSortNames, TellsNamesApartBehindTheirFirstSixteenBytes) {
  const Persons persons = {record("", "", "Featherstonehaughs"), record("", "", "Featherstonehaugha"),
                           record("", "", "Featherstonehaug"),   record("", "", "Featherstonehau"),
                           record("", "", "Featherstonehaughs"), record("", "", "Featherstonehaughb")};
  EXPECT_EQ(ordered(persons), (std::vector<uint32_t>{3, 2, 1, 5, 0, 4}));
}

TEST(KRSortNames, AsksOtherClassesForTheirOwnNames) {
  const Persons persons = {krMake<NumberedRecord>("b"_kr), krMake<NumberedRecord>("a"_kr),
                           krMake<KRNamedPerson>("x"_kr, "AA"_kr), krMake<KRNamedPerson>("AB"_kr)};
  EXPECT_EQ(ordered(persons), (std::vector<uint32_t>{1, 2, 3, 0}));
}

TEST(KRSortNames, SaysNothingOfWhatStandsInOrder) {
  EXPECT_TRUE(ordered({}).empty());
  EXPECT_TRUE(ordered({record("", "", "a"), record("", "", "A"), record("", "", "b")}).empty());
}

}  // namespace
