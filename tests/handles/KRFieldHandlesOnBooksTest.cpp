// The handles that repair one contact, on persons of every kind of book, as they were read and as they are saved.
#include <gmock/gmock.h>

#include "contacts/model/KRObjectAddress.h"
#include "contacts/model/KRObjectPersonName.h"
#include "handles/KRHandleUseDefaultString.h"
#include "tests/support/KRAllowedLists.h"
#include "tests/support/KRBookFixture.h"

namespace {

using testing::ElementsAre;

class KRFieldHandlesOnBooksTest : public KRBookFixture {
 protected:
  /// The parts of the person's name; "-" for nothing.
  std::vector<std::string> name(size_t place = 0) const {
    KRHold hold;
    const KRNameView view = person(place)->readName(hold);
    if (!view.isPresent) return {};
    const auto part = [](KRText text) { return text.isNothing() ? std::string("-") : std::string(text.view()); };
    return {part(view.first), part(view.middle), part(view.last)};
  }
  void setName(const KRString& first, const KRString& middle, const KRString& last) const {
    person(0)->setValue(krLabelled(krMake<KRObjectPersonName>(first, middle, last), KRValueType::PersonName),
                        KRProPertyName);
  }
  template <class Object>
  void setEntries(const KRString& property, const std::vector<std::pair<const char*, const char*>>& rows) const {
    auto list = krMake<KRMutableMultipleValue>();
    const int32_t type = KRProperty::propertyWithName(property)->subValueType();
    for (const auto& [label, value] : rows) {
      list->addValue(krLabelled(krMake<Object>(KRString(value)), type, KRString(label)));
    }
    person(0)->setValue(list, property);
  }
  std::vector<std::string> entries(KROrdinal property) const {
    std::vector<std::string> all;
    KRHold hold;
    person(0)->readEntries(property, hold, [&](const KREntryView& entry) {
      all.push_back(std::string(entry.label.view()) + " " + std::string(entry.text.view()));
      return true;
    });
    return all;
  }
  bool has(const KRString& property) const { return static_cast<bool>(person(0)->valueByPropertyName(property)); }
};
INSTANTIATE_TEST_SUITE_P(Books, KRFieldHandlesOnBooksTest, testing::ValuesIn(krBookMakers()),
                         testing::PrintToStringParamName());

TEST_P(KRFieldHandlesOnBooksTest, EditAndIgnoreChangeNoContact) {
  fill({{.first = "Ann"_kr, .note = " "_kr, .phones = {"1"_kr, "1"_kr}}});
  const auto before = shown(book());
  fix(KRHandleNameEdit, KRIssueNoteWithSpacingOnly);
  fix(KRHandleNameIgnore, KRIssueDuplicatePhoneNumber);
  EXPECT_EQ(shown(book()), before);
  EXPECT_TRUE(trashed().empty());
}

TEST_P(KRFieldHandlesOnBooksTest, DeletePropertyClearsTheFieldOfTheIssueAndNoOther) {
  const std::pair<KRString, KRString> rows[] = {{KRIssueNoteWithSpacingOnly, KRProPertyNote},
                                                {KRIssueUnusualTitle, KRProPertyTitle},
                                                {KRIssueUnusualSuffix, KRProPertySuffix},
                                                {KRIssueNicknameWithSpacingOnly, KRProPertyNickname}};
  fill({{.first = "Ann"_kr, .title = "Count"_kr, .suffix = "III"_kr, .nickname = " x"_kr, .note = " y"_kr}});
  size_t left = 4;
  for (const auto& [issue, property] : rows) {
    fix(KRHandleNameDeleteProperty, issue);
    EXPECT_FALSE(has(property));
    --left;
    size_t held = 0;
    for (const auto& row : rows) held += has(row.second) ? 1 : 0;
    EXPECT_EQ(held, left);
  }
  EXPECT_THAT(name(), ElementsAre("Ann", "-", "-"));
  expectKept();
}

TEST_P(KRFieldHandlesOnBooksTest, DeletePropertyOfAnotherIssueClearsNothing) {
  fill({{.first = "Ann"_kr, .title = "Count"_kr, .note = " y"_kr}});
  const auto before = shown(book());
  fix(KRHandleNameDeleteProperty, KRIssueBlankName);
  fix(KRHandleNameDeleteProperty, KRIssueUnusualSuffix);
  EXPECT_EQ(shown(book()), before);
}

TEST_P(KRFieldHandlesOnBooksTest, RemoveSpaceJoinsTheWordsOfTheFirstName) {
  fill({{.first = " Mary Jane "_kr, .middle = "Q R"_kr, .last = "van Elm"_kr, .phones = {"1"_kr}}});
  fix(KRHandleNameRemoveSpace, KRIssueSpacingInTheFirstName);
  EXPECT_THAT(name(), ElementsAre("MaryJane", "Q R", "van Elm"));
  EXPECT_EQ(person(0)->displayName(), "MaryJane Q R van Elm");
  expectKept();
}

TEST_P(KRFieldHandlesOnBooksTest, RemoveSpaceLeavesNothingOfAFirstNameOfBlanks) {
  fill({{.first = "x"_kr}});
  setName("   "_kr, "Q"_kr, "Fox"_kr);
  fix(KRHandleNameRemoveSpace, KRIssueSpacingInTheFirstName);
  EXPECT_THAT(name(), ElementsAre("-", "Q", "Fox"));
  expectKept();
}

TEST_P(KRFieldHandlesOnBooksTest, RemoveSpaceKeepsTabs) {
  fill({{.first = "x"_kr}});
  setName("Ann\t Lee"_kr, {}, {});
  fix(KRHandleNameRemoveSpace, KRIssueSpacingInTheFirstName);
  EXPECT_THAT(name(), ElementsAre("Ann\tLee", "-", "-"));
}

TEST_P(KRFieldHandlesOnBooksTest, UseDefaultStringFillsWhatIsMissingAndKeepsWhatIsEmpty) {
  fill({{.middle = "Q"_kr}});
  fix(KRHandleNameUseDefaultString, KRIssueIncompleteName);
  EXPECT_THAT(name(), ElementsAre("???", "Q", "???"));
  expectKept();
  setName({}, {}, ""_kr);
  fix(KRHandleNameUseDefaultString, KRIssueIncompleteName);
  EXPECT_THAT(name(), ElementsAre("???", "-", ""));
}

TEST_P(KRFieldHandlesOnBooksTest, UseDefaultStringLeavesAPersonWithoutANameAlone) {
  fill({{.note = "tea"_kr}});
  const auto before = shown(book());
  fix(KRHandleNameUseDefaultString, KRIssueBlankName);
  EXPECT_FALSE(has(KRProPertyName));
  EXPECT_EQ(shown(book()), before);
}

TEST_P(KRFieldHandlesOnBooksTest, AddSupportExtendsTheListsAndChangesNoContact) {
  const KRAllowedLists lists({.prefixes = {"Dr."_kr}, .suffixes = {"Jr."_kr}});
  fill({{.first = "Ann"_kr, .title = "Count"_kr, .suffix = "Jr."_kr}});
  const auto before = shown(book());
  fix(KRHandleNameAddSupport, KRIssueUnusualTitle);
  fix(KRHandleNameAddSupport, KRIssueUnusualSuffix);
  EXPECT_THAT(KRAllowedLists::current().prefixes, ElementsAre("Dr."_kr, "Count"_kr));
  EXPECT_THAT(KRAllowedLists::current().suffixes, ElementsAre("Jr."_kr));
  EXPECT_EQ(shown(book()), before);
}

TEST_P(KRFieldHandlesOnBooksTest, OfEqualPhonesTheFirstStaysWithItsLabel) {
  fill({{.first = "Ann"_kr}});
  setEntries<KRObjectPhone>(KRProPertyPhone, {{"home", "555 1234"}, {"work", "555 1234"}, {"mobile", "5551234"}});
  expectKept();
  fix(KRHandleNameDeleteDublicatProperty, KRIssueDuplicatePhoneNumber);
  EXPECT_THAT(entries(KROrdinal::Phone), ElementsAre("home 555 1234", "mobile 5551234"));
  expectKept();
}

TEST_P(KRFieldHandlesOnBooksTest, EmailsThatDifferInCaseBothStay) {
  fill({{.first = "Ann"_kr, .emails = {"a@x"_kr, "A@x"_kr, "a@x"_kr, "a@x"_kr, "b@x"_kr}}});
  fix(KRHandleNameDeleteDublicatProperty, KRIssueDuplicateEmailAddress);
  EXPECT_THAT(entries(KROrdinal::Email), ElementsAre("home a@x", "home A@x", "home b@x"));
  expectKept();
}

TEST_P(KRFieldHandlesOnBooksTest, OfThreeEqualAddressesTheFirstStays) {
  fill({{.first = "Ann"_kr}});
  auto list = krMake<KRMutableMultipleValue>();
  for (const char* label : {"home", "work", "other"}) {
    auto address = krMake<KRObjectAddress>();
    address->setStringValue("Elm 1"_kr, "street"_kr);
    address->setStringValue("Graz"_kr, "city"_kr);
    list->addValue(krLabelled(address, KRValueType::Address, KRString(label)));
  }
  person(0)->setValue(list, KRProPertyAddress);
  fix(KRHandleNameDeleteDublicatProperty, KRIssueDuplicateAddress);
  EXPECT_EQ(person(0)->entryCount(KROrdinal::Address), 1U);
  EXPECT_THAT(entries(KROrdinal::Address), ElementsAre("home "));
  expectKept();
}

TEST_P(KRFieldHandlesOnBooksTest, DuplicateValuesOfAnotherIssueStay) {
  fill({{.first = "Ann"_kr, .phones = {"1"_kr, "1"_kr}}});
  const auto before = shown(book());
  fix(KRHandleNameDeleteDublicatProperty, KRIssueBlankName);
  fix(KRHandleNameDeleteDublicatProperty, KRIssueDuplicateAddress);
  EXPECT_EQ(shown(book()), before);
  EXPECT_FALSE(has(KRProPertyAddress));
}

}  // namespace
