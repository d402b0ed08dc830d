#include "app/FixSession.h"

#include <gmock/gmock.h>

#include <random>

#include "app/FixChoice.h"
#include "contacts/KRTempPerson.h"
#include "contacts/model/KRObjectPhone.h"
#include "handles/KRHandleNames.h"
#include "tests/app/Walk.h"
#include "tests/support/KRPersonSketch.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class FixSessionTest : public Walk {
 protected:
  static KRRef<KRIssueHandle> handleNamed(const FixSession& session, const KRString& name) {
    for (const auto& handle : session.fixes()) {
      if (handle->name() == name) return handle;
    }
    ADD_FAILURE() << "no fix " << name.view();
    return {};
  }
  std::vector<std::string> names() const {
    std::vector<std::string> all;
    for (const IKRPerson& person : book().allPersons()) all.emplace_back(person.displayName().view());
    return all;
  }
  static std::string current(const FixSession& session) {
    const KRIssueObject* finding = session.current();
    return finding == nullptr ? "-" : std::string(finding->persons().first()->ID().view());
  }
};

TEST_F(FixSessionTest, WalksThroughTheFindingsInTheirOrder) {
  for (const auto lines : {kNobody, kBell, kCole}) add(lines);
  scan({KRIssueBlankName, KRIssueSpacingInTheFirstName});
  FixSession session(book(), result());
  EXPECT_EQ(session.count(), 3U);
  EXPECT_EQ(session.openCount(), 3U);
  EXPECT_EQ(session.openCountOfIssue(), 1U);
  EXPECT_EQ(session.number(), 1U);
  EXPECT_EQ(current(session), "nobody");
  session.back();
  EXPECT_EQ(current(session), "nobody");
  session.skip();
  EXPECT_EQ(current(session), "bell");
  EXPECT_EQ(session.openCountOfIssue(), 2U);
  session.skip();
  session.skip();
  EXPECT_EQ(current(session), "-");
  EXPECT_EQ(session.openCountOfIssue(), 0U);
  EXPECT_THAT(session.fixes(), IsEmpty());
  session.skip();
  session.back();
  EXPECT_EQ(current(session), "cole");
  session.restart();
  EXPECT_EQ(current(session), "nobody");
  EXPECT_EQ(session.unsavedCount(), 0U);
}

TEST_F(FixSessionTest, OfNoFindingsThereIsNothingToWalkThrough) {
  FixSession session(book(), result());
  EXPECT_EQ(session.count(), 0U);
  EXPECT_EQ(session.current(), nullptr);
  session.back();
  session.skip();
  session.restart();
  session.undo();
  EXPECT_EQ(session.current(), nullptr);
  EXPECT_EQ(session.undoable(), "");
}

TEST_F(FixSessionTest, OffersTheFixesThatChangeSomething) {
  for (const auto lines : {kAnn1, kAnn2}) add(lines);
  scan({KRIssueDuplicateNames});
  const FixSession session(book(), result());
  std::vector<std::string> offered;
  for (const auto& handle : session.fixes()) offered.emplace_back(handle->name().view());
  EXPECT_THAT(offered, ElementsAre("KRHandleNameMergeContact"));
}

TEST_F(FixSessionTest, GoesBackOverWhatIsSettled) {
  for (const auto lines : {kNobody, kBell, kCole}) add(lines);
  scan({KRIssueBlankName, KRIssueSpacingInTheFirstName});
  FixSession session(book(), result());
  session.skip();
  session.ignore();
  EXPECT_EQ(current(session), "cole");
  session.back();
  EXPECT_EQ(current(session), "nobody");
  session.skip();
  EXPECT_EQ(current(session), "cole");
}

TEST_F(FixSessionTest, AFixIsDoneNamedAndTakenBack) {
  for (const auto lines : {kBell, kCole}) add(lines);
  scan({KRIssueSpacingInTheFirstName});
  const auto before = state();
  FixSession session(book(), result());
  const FixEffect effect = session.fix(handleNamed(session, KRHandleNameRemoveSpace));
  EXPECT_EQ(effect.kind, FixKind::Values);
  EXPECT_TRUE(effect.changesValues());
  EXPECT_THAT(names(), ElementsAre("MaryJane Bell", "Sue Ann Cole"));
  EXPECT_EQ(current(session), "cole");
  EXPECT_EQ(session.openCount(), 1U);
  EXPECT_EQ(session.unsavedCount(), 1U);
  EXPECT_EQ(session.undoable(), "Remove the space: Mary Jane Bell");
  session.skip();
  session.undo();
  EXPECT_EQ(current(session), "bell");
  EXPECT_EQ(state(), before);
  EXPECT_EQ(session.undoable(), "");
}

TEST_F(FixSessionTest, AMergeIsTakenBack) {
  for (const auto lines : {kAnn1, kBell, kAnn2, kAnn3}) add(lines);
  scan({KRIssueDuplicateNames, KRIssuePhonesDuplicatedAmongMultipleContacts, KRIssueSpacingInTheFirstName});
  const auto before = state();
  FixSession session(book(), result());
  ASSERT_EQ(session.count(), 3U);
  const FixEffect effect = session.fix(handleNamed(session, KRHandleNameMergeContact));
  EXPECT_EQ(effect.trashed.size(), 3U);
  EXPECT_THAT(names(), ElementsAre("Mary Jane Bell", "Ann Barrow"));
  // The phones that two of them shared are of one contact now.
  EXPECT_EQ(session.openCount(), 1U);
  EXPECT_EQ(current(session), "bell");
  session.undo();
  EXPECT_EQ(state(), before);
  EXPECT_EQ(current(session), "ann1");
}

TEST_F(FixSessionTest, AllOfAnIssueAreOneStep) {
  for (const auto lines : {kBell, kDale, kCole}) add(lines);
  scan({KRIssueSpacingInTheFirstName, KRIssueInvalidCharacters});
  const auto before = state();
  FixSession session(book(), result());
  EXPECT_EQ(session.fixAllOfIssue(handleNamed(session, KRHandleNameRemoveSpace)), 2U);
  EXPECT_THAT(names(), ElementsAre("MaryJane Bell", "Tim Dale", "SueAnn Cole"));
  EXPECT_EQ(current(session), "dale");
  EXPECT_EQ(session.unsavedCount(), 1U);
  EXPECT_EQ(session.undoable(), "Remove the space: 2 findings");
  session.undo();
  EXPECT_EQ(state(), before);
}

TEST_F(FixSessionTest, WhatIsSavedIsNoMoreTakenBack) {
  add(kBell);
  scan({KRIssueSpacingInTheFirstName});
  FixSession session(book(), result());
  session.fix(session.fixes().front());
  session.settle();
  EXPECT_EQ(session.unsavedCount(), 0U);
  session.undo();
  EXPECT_THAT(names(), ElementsAre("MaryJane Bell"));
}

// Editing

TEST_F(FixSessionTest, AnEditThatMendsSettlesTheFinding) {
  const auto dale = add(kDale);
  scan({KRIssueInvalidCharacters});
  const auto before = state();
  FixSession session(book(), result());
  const auto original = record(kDale);
  const auto edited = record("N:Dale;Tim;;;\r\nFN:Tim Dale\r\nTEL:07700\r\nNOTE:new\r\n");
  EXPECT_TRUE(session.edit(*dale, *original, *edited));
  EXPECT_EQ(session.openCount(), 0U);
  EXPECT_EQ(dale->mainPhone()->phoneNumber(), "07700");
  EXPECT_TRUE(dale->valueByPropertyName(KRProPertyNote));
  EXPECT_EQ(session.undoable(), "Edit: Tim Dale");
  session.undo();
  EXPECT_EQ(state(), before);
}

TEST_F(FixSessionTest, AnEditThatDoesNotMendLeavesTheFindingOpenAndChangesOnlyWhatWasEdited) {
  const auto dale = add(kDale);
  scan({KRIssueInvalidCharacters});
  FixSession session(book(), result());
  const auto original = record(kDale);
  // Changed by an earlier fix: what the editor did not touch stays as it is.
  dale->setValue(krLabelled("Baker"_kr, KRValueType::Text), KRProPertyJobTitle);
  const auto edited = record("N:Dale;Tim;;;\r\nFN:Tim Dale\r\nTEL:ask Jo\r\nNOTE:new\r\n");
  EXPECT_FALSE(session.edit(*dale, *original, *edited));
  EXPECT_EQ(current(session), "dale");
  EXPECT_EQ(session.unsavedCount(), 1U);
  EXPECT_TRUE(dale->valueByPropertyName(KRProPertyNote));
  EXPECT_TRUE(dale->valueByPropertyName(KRProPertyJobTitle));
  session.undo();
  EXPECT_FALSE(dale->valueByPropertyName(KRProPertyNote));
  EXPECT_TRUE(dale->valueByPropertyName(KRProPertyJobTitle));
}

// Ignoring

TEST_F(FixSessionTest, IgnoringChangesNoContact) {
  add(kBell);
  scan({KRIssueSpacingInTheFirstName});
  FixSession session(book(), result());
  session.ignore();
  EXPECT_THAT(names(), ElementsAre("Mary Jane Bell"));
  EXPECT_EQ(session.openCount(), 0U);
  EXPECT_EQ(session.unsavedCount(), 1U);
  EXPECT_EQ(session.unsavedRememberedCount(), 0U);
}

TEST_F(FixSessionTest, WhatIsIgnoredIsRememberedUntilItIsTakenBack) {
  for (const auto lines : {kBell, kCole, kDale}) add(lines);
  scan({KRIssueSpacingInTheFirstName, KRIssueInvalidCharacters});
  const auto bell = finding(0, 0);
  const auto cole = finding(0, 1);
  const auto dale = finding(1);
  auto remembered = KRIgnoredFindings::ofBook(book().ID());
  ASSERT_TRUE(remembered.isOk());
  // Remembered in an earlier run: taking a step back does not forget it.
  remembered->add(*cole);
  FixSession session(book(), result(), &*remembered);
  session.fixAllOfIssue(KRIssueHandle::issueHandleWithName(KRHandleNameIgnore));
  EXPECT_TRUE(remembered->holds(*bell));
  EXPECT_EQ(session.unsavedRememberedCount(), 1U);
  session.ignore();
  EXPECT_TRUE(remembered->holds(*dale));
  EXPECT_EQ(session.unsavedRememberedCount(), 2U);
  session.undo();
  EXPECT_FALSE(remembered->holds(*dale));
  EXPECT_TRUE(remembered->holds(*bell));
  session.undo();
  EXPECT_FALSE(remembered->holds(*bell));
  EXPECT_TRUE(remembered->holds(*cole));
  session.fix(session.fixes().front());
  EXPECT_FALSE(remembered->holds(*bell));
  EXPECT_EQ(remembered->entries().size(), 1U);
}

// All of it

TEST_F(FixSessionTest, WhateverWasDoneEverythingTakenBackIsAsItWas) {
  for (const auto lines : {kAnn1, kBell, kNobody, kAnn2, kCole, kDale, kAnn3}) add(lines);
  add("N:Finch;Oliver;;Count;III\r\nFN:Oliver Finch\r\nTEL:5\r\nTEL:5\r\nUID:o1\r\n");
  add("N:Finch;Oliver;;Count;III\r\nFN:Oliver Finch\r\nTEL:5\r\nTEL:5\r\nUID:o2\r\n");
  scan({KRIssueDuplicateNames, KRIssueDuplicateInfo, KRIssueBlankName, KRIssueInvalidCharacters,
        KRIssueDuplicatePhoneNumber, KRIssuePhonesDuplicatedAmongMultipleContacts, KRIssueUnusualTitle,
        KRIssueUnusualSuffix, KRIssueSpacingInTheFirstName});
  const auto before = state();
  std::mt19937 random(20241122);
  for (int round = 0; round < 30; ++round) {
    FixSession session(book(), result());
    session.restart();
    for (int i = 0; i < 12 && session.current() != nullptr; ++i) {
      const auto fixes = session.fixes();
      const auto choice = random() % (fixes.size() + 3);
      if (choice < fixes.size()) {
        random() % 4 == 0 ? static_cast<void>(session.fixAllOfIssue(fixes[choice]))
                          : static_cast<void>(session.fix(fixes[choice]));
      } else if (choice == fixes.size()) {
        session.ignore();
      } else if (choice == fixes.size() + 1) {
        session.skip();
      } else {
        session.undo();
      }
    }
    while (session.unsavedCount() > 0) session.undo();
    ASSERT_EQ(state(), before) << round;
  }
}

}  // namespace
