// Merging, from the finding to the saved book, on every kind of book.
#include <gmock/gmock.h>

#include "contacts/model/KRObjectAddress.h"
#include "contacts/model/KRObjectInstantMessage.h"
#include "contacts/model/KRSaveScope.h"
#include "contacts/vcard/KRVCardWriter.h"
#include "tests/support/KRBookFixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class KRMergeOnBooksTest : public KRBookFixture {
 protected:
  /// Merges these persons, by a finding of the same name.
  void merge(const std::vector<size_t>& places) { fix(KRHandleNameMergeContact, KRIssueDuplicateNames, places); }
  /// The person that the merge has made: it is the last one of the book.
  KRRef<IKRPerson> merged() const { return person(book().allPersonsCount() - 1); }

  /// "label text" of each entry.
  static std::vector<std::string> entries(const IKRPerson& person, KROrdinal property) {
    std::vector<std::string> all;
    KRHold hold;
    person.readEntries(property, hold, [&](const KREntryView& entry) {
      all.push_back(std::string(entry.label.view()) + " " + std::string(entry.text.view()));
      return true;
    });
    return all;
  }
  static std::string text(const IKRPerson& person, KROrdinal property) {
    KRHold hold;
    const KRText read = person.readText(property, hold);
    return read.isNothing() ? "(nothing)" : std::string(read.view());
  }
  template <class Object>
  static void setEntries(IKRPerson& person, const KRString& name,
                         const std::vector<std::pair<const char*, const char*>>& rows) {
    auto list = krMake<KRMutableMultipleValue>();
    const int32_t type = KRProperty::propertyWithName(name)->subValueType();
    for (const auto& [label, value] : rows) {
      list->addValue(krLabelled(krMake<Object>(KRString(value)), type, KRString(label)));
    }
    person.setValue(list, name);
  }
};
INSTANTIATE_TEST_SUITE_P(Books, KRMergeOnBooksTest, testing::ValuesIn(krBookMakers()),
                         testing::PrintToStringParamName());

TEST_P(KRMergeOnBooksTest, OneNewPersonStandsForAllAndTheyGoToTheTrash) {
  fill({{.first = "Ann"_kr, .phones = {"1"_kr}},
        {.first = "Bob"_kr},
        {.first = "Ann"_kr, .phones = {"2"_kr}},
        {.first = "Ann"_kr, .note = "third"_kr}});
  const std::vector<std::string> before = shown(book());
  const std::vector<KRString> IDs{person(0)->ID(), person(2)->ID(), person(3)->ID()};
  merge({0, 2, 3});
  EXPECT_THAT(names(), ElementsAre("Bob", "Ann"));
  EXPECT_EQ(entries(*merged(), KROrdinal::Phone), (std::vector<std::string>{"home 1", "home 2"}));
  EXPECT_EQ(text(*merged(), KROrdinal::Note), "third");
  EXPECT_EQ(merged()->addressBookID(), book().ID());
  EXPECT_EQ(shown(*trashBook()), (std::vector<std::string>{before[0], before[2], before[3]}));
  for (size_t i = 0; i < IDs.size(); ++i) {
    EXPECT_EQ(trashBook()->allPersons().at(i)->ID(), IDs[i]);
    EXPECT_EQ(dynamic_cast<const KRTempPerson*>(trashBook()->allPersons().at(i))->fromID(), book().ID());
    EXPECT_NE(merged()->ID(), IDs[i]);
  }
  EXPECT_TRUE(result().contexts().isEmpty());
}

TEST_P(KRMergeOnBooksTest, TheBookAndTheTrashAreSaved) {
  fill({{.first = "Ann"_kr, .phones = {"1"_kr}}, {.first = "Ann"_kr}});
  merge({0, 1});
  expectStored(shown(book()));
  EXPECT_EQ(shown(*trash()), shown(*trashBook()));
  EXPECT_EQ(trash()->allPersonsCount(), 2U);
}

TEST_P(KRMergeOnBooksTest, InASaveScopeNothingIsWrittenBeforeItsCommit) {
  fill({{.first = "Ann"_kr, .phones = {"1"_kr}}, {.first = "Ann"_kr}});
  const auto before = shown(book());
  KRSaveScope scope;
  merge({0, 1});
  expectStored(before);
  EXPECT_EQ(trash()->allPersonsCount(), 0U);
  ASSERT_TRUE(scope.commit());
  expectStored(shown(book()));
  EXPECT_EQ(trash()->allPersonsCount(), 2U);
}

TEST_P(KRMergeOnBooksTest, OtherFindingsAboutThemAreShrunkOrDropped) {
  fill({{.first = "Ann"_kr}, {.first = "Ann"_kr}, {.first = "Bob"_kr}, {.first = "Cid"_kr}});
  const auto field = finding(KRHandleNameIgnore, KRIssueBlankName, {1});
  const auto pair = finding(KRHandleNameIgnore, KRIssuePhonesDuplicatedAmongMultipleContacts, {1, 2});
  const auto group = finding(KRHandleNameIgnore, KRIssueEmailsDuplicatedAmongMultipleContacts, {0, 2, 3, 1});
  const auto ann = person(0);
  merge({0, 1});
  EXPECT_FALSE(isListed(field));
  EXPECT_FALSE(isListed(pair));
  ASSERT_TRUE(isListed(group));
  EXPECT_EQ(krPlain(group->persons()), (std::vector<IKRPerson*>{person(0).get(), person(1).get()}));
  EXPECT_EQ(result().issueObjectsOfPerson(ann.get()), nullptr);
  EXPECT_EQ(result().issueObjectsOfPerson(merged().get()), nullptr);
  EXPECT_EQ(result().contexts().count(), 1U);
}

TEST_P(KRMergeOnBooksTest, TheFirstPersonsNameWinsWhole) {
  fill({{.first = "Ann"_kr}, {.first = "Ann"_kr, .middle = "Q"_kr, .last = "Fox"_kr}});
  merge({0, 1});
  EXPECT_THAT(names(), ElementsAre("Ann"));
}

TEST_P(KRMergeOnBooksTest, AnEmptyNoteOfTheFirstPersonWins) {
  fill({{.first = "Ann"_kr}, {.first = "Ann"_kr, .note = "tea"_kr}});
  person(0)->setValue(krLabelled(""_kr, KRValueType::Text), KRProPertyNote);
  const auto note = person(0)->valueByPropertyName(KRProPertyNote);
  const auto made = finding(KRHandleNameMergeContact, KRIssueDuplicateNames, {0, 1});
  const auto person = KRIssueHandle::issueHandleWithName(KRHandleNameMergeContact)->indirectFix(made.get());
  EXPECT_EQ(person->valueByPropertyName(KRProPertyNote), note);
  EXPECT_EQ(text(*person, KROrdinal::Note), "");
}

TEST_P(KRMergeOnBooksTest, WhatTheFirstPersonLacksComesFromTheNext) {
  fill({{.first = "Ann"_kr, .company = "Elm"_kr},
        {.first = "Ann"_kr, .company = "Oak"_kr, .jobTitle = "Baker"_kr},
        {.first = "Ann"_kr, .nickname = "Annie"_kr, .jobTitle = "Cook"_kr}});
  merge({0, 1, 2});
  EXPECT_EQ(text(*merged(), KROrdinal::Company), "Elm");
  EXPECT_EQ(text(*merged(), KROrdinal::JobTitle), "Baker");
  EXPECT_EQ(text(*merged(), KROrdinal::Nickname), "Annie");
  expectKept();
}

TEST_P(KRMergeOnBooksTest, TagsAreJoined) {
  fill({{.first = "Ann"_kr}, {.first = "Ann"_kr}});
  person(0)->setValue(krLabelled(KRValueList::ofTexts({"t1"_kr, "t2"_kr}), KRValueType::TextList), KRProPertyTags);
  person(1)->setValue(krLabelled(KRValueList::ofTexts({"t2"_kr, "t3"_kr}), KRValueType::TextList), KRProPertyTags);
  merge({0, 1});
  EXPECT_EQ(merged()->tagArray(), (KRStringList{"t1"_kr, "t2"_kr, "t3"_kr}));
  expectKept();
}

TEST_P(KRMergeOnBooksTest, EachPhoneAndEmailOnce) {
  fill({{.first = "Ann"_kr}, {.first = "Ann"_kr}});
  setEntries<KRObjectPhone>(*person(0), KRProPertyPhone, {{"home", "1"}});
  setEntries<KRObjectPhone>(*person(1), KRProPertyPhone, {{"work", "1"}, {"mobile", "2"}});
  setEntries<KRObjectEmail>(*person(0), KRProPertyEmail, {{"home", "a@x"}});
  setEntries<KRObjectEmail>(*person(1), KRProPertyEmail, {{"home", "A@x"}, {"work", "a@x"}});
  merge({0, 1});
  EXPECT_EQ(entries(*merged(), KROrdinal::Phone), (std::vector<std::string>{"home 1", "mobile 2"}));
  EXPECT_EQ(entries(*merged(), KROrdinal::Email), (std::vector<std::string>{"home a@x", "home A@x"}));
  expectKept();
}

TEST_P(KRMergeOnBooksTest, AccountsWithDifferentServicesAreBothKept) {
  fill({{.first = "Ann"_kr}, {.first = "Ann"_kr}});
  for (size_t i = 0; i < 2; ++i) {
    auto list = krMake<KRMutableMultipleValue>();
    for (const char* service : {"ICQ", i == 0 ? "AIM" : "Jabber"}) {
      KRInstantMessageServer* server = KRInstantMessageServer::serverWithDisplayName(service);
      list->addValue(krLabelled(krMake<KRObjectInstantMessage>("ann"_kr, server), KRValueType::InstantMessage));
    }
    person(i)->setValue(list, KRProPertyInstantMessage);
  }
  merge({0, 1});
  EXPECT_EQ(merged()->entryCount(KROrdinal::InstantMessage), 3U);
  expectKept();
}

TEST_P(KRMergeOnBooksTest, AFindingWithOnePersonYieldsACopy) {
  fill({{.first = "Ann"_kr, .title = "Dr."_kr, .phones = {"1"_kr, "2"_kr}, .emails = {"a@x"_kr}}});
  const std::string before = shown(*person(0));
  const auto ann = person(0);
  merge({0});
  EXPECT_EQ(book().allPersonsCount(), 1U);
  EXPECT_NE(merged(), ann);
  EXPECT_EQ(shown(*merged()), before);
  EXPECT_EQ(shown(*trashBook()), std::vector<std::string>{before});
  EXPECT_TRUE(ann->addressBookID().isNothing());
}

TEST_P(KRMergeOnBooksTest, LinesThatTheModelDoesNotKnowAreCarriedEachOnce) {
  fill({});
  for (const char* lines : {"N:;Ann\r\nTEL:1\r\nX-OWN:both\r\nX-OWN:first\r\nUID:1\r\n",
                            "N:;Ann\r\nTEL:2\r\nX-OWN:both\r\nGEO:1;2\r\nUID:2\r\n"}) {
    book().addPerson(record(lines).get());
  }
  ASSERT_EQ(book().allPersonsCount(), 2U);
  expectKept();
  merge({0, 1});
  EXPECT_EQ(entries(*merged(), KROrdinal::Phone).size(), 2U);
  const auto expectLines = [](KRAddressBook& in) {
    ASSERT_EQ(in.allPersonsCount(), 1U);
    const auto* person = dynamic_cast<const ABPerson*>(in.allPersons().first());
    const std::string card = KRVCardWriter(KRVCardVersion::V30).card(*person);
    for (const std::string line : {"X-OWN:both\r\n", "X-OWN:first\r\n", "GEO:1;2\r\n"}) {
      const size_t at = card.find(line);
      EXPECT_NE(at, std::string::npos) << line << card;
      EXPECT_EQ(card.find(line, at + 1), std::string::npos) << card;
    }
  };
  expectLines(book());
  if (GetParam().keeps) expectLines(*GetParam().open(folder_));
}

TEST_P(KRMergeOnBooksTest, IndirectFixOnlyMakesThePerson) {
  fill({{.first = "Ann"_kr}, {.first = "Ann"_kr}});
  const auto made = finding(KRHandleNameMergeContact, KRIssueDuplicateNames, {0, 1});
  const auto person = KRIssueHandle::issueHandleWithName(KRHandleNameMergeContact)->indirectFix(made.get());
  EXPECT_EQ(merged(), person);
  EXPECT_THAT(names(), ElementsAre("Ann", "Ann", "Ann"));
  EXPECT_THAT(trashed(), IsEmpty());
  EXPECT_TRUE(isListed(made));
}

}  // namespace
