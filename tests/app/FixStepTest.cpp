#include "app/FixStep.h"

#include <gmock/gmock.h>

#include "handles/KRHandleNames.h"
#include "handles/KRIssueHandle.h"
#include "issues/KRIssueObject.h"
#include "tests/app/Walk.h"
#include "tests/support/KRAllowedLists.h"
#include "tests/support/KRPersonSketch.h"

namespace {

using testing::Contains;
using testing::Not;

class FixStepTest : public Walk {
 protected:
  /// Fixes the finding in a step.
  static void fixIn(FixStep& step, KRIssueObject& finding, const KRString& handleName) {
    step.remember(finding);
    finding.setHandle(KRIssueHandle::issueHandleWithName(handleName));
    finding.fix();
    step.seal();
  }
};

TEST_F(FixStepTest, ADeletedContactComesBackAtItsPlace) {
  for (const auto lines : {kBell, kNobody, kCole}) add(lines);
  scan({KRIssueBlankName, KRIssueSpacingInTheFirstName});
  const auto before = state();
  const FindingPlaces places(*result());
  FixStep step(book(), *result(), places);
  fixIn(step, *finding(0), KRHandleNameDeleteContact);
  EXPECT_EQ(book().allPersonsCount(), 2U);
  EXPECT_EQ(trashBook().allPersonsCount(), 1U);
  step.undo();
  EXPECT_EQ(state(), before);
  EXPECT_EQ(book().allPersons().at(1)->addressBookID(), book().ID());
}

TEST_F(FixStepTest, WhatWasInTheTrashBeforeStays) {
  add(kNobody);
  scan({KRIssueBlankName});
  trashBook().addPerson(record(kDale).get());
  const auto before = state();
  const FindingPlaces places(*result());
  FixStep step(book(), *result(), places);
  fixIn(step, *finding(0), KRHandleNameDeleteContact);
  EXPECT_EQ(trashBook().allPersonsCount(), 2U);
  step.undo();
  EXPECT_EQ(state(), before);
}

TEST_F(FixStepTest, AllowedTextsAreAsBefore) {
  const KRAllowedLists lists({.prefixes = {"Dr."_kr}, .suffixes = {"Jr."_kr}});
  add("N:Finch;Oliver;;Count;III\r\nUID:o\r\n");
  scan({KRIssueUnusualTitle, KRIssueUnusualSuffix});
  const FindingPlaces places(*result());
  FixStep prefix(book(), *result(), places);
  fixIn(prefix, *finding(0), KRHandleNameAddSupport);
  FixStep suffix(book(), *result(), places);
  fixIn(suffix, *finding(0), KRHandleNameAddSupport);
  EXPECT_THAT(KRAllowedLists::current().suffixes, Contains("III"_kr));
  suffix.undo();
  EXPECT_THAT(KRAllowedLists::current().suffixes, Not(Contains("III"_kr)));
  EXPECT_THAT(KRAllowedLists::current().prefixes, Contains("Count"_kr));
  prefix.undo();
  EXPECT_THAT(KRAllowedLists::current().prefixes, testing::ElementsAre("Dr."_kr));
  EXPECT_EQ(result()->contexts().count(), 2U);
}

TEST_F(FixStepTest, ValuesThatWereChangedBeforeTheStepStayChanged) {
  const auto bell = add(kBell);
  bell->setValue(krLabelled("tea"_kr, KRValueType::Text), KRProPertyNote);
  scan({KRIssueSpacingInTheFirstName});
  const FindingPlaces places(*result());
  FixStep step(book(), *result(), places);
  fixIn(step, *finding(0), KRHandleNameRemoveSpace);
  step.undo();
  EXPECT_EQ(bell->displayName(), "Mary Jane Bell");
  EXPECT_TRUE(bell->isChanged(KROrdinal::Note));
  EXPECT_FALSE(bell->isChanged(KROrdinal::Name));
}

TEST_F(FixStepTest, FindingsThatWereLeftOutOfTheScanStayOut) {
  for (const auto lines : {kAnn1, kAnn2}) add(lines);
  scan({KRIssueDuplicateNames});
  // As a filter does: out of the context, but still under its contacts.
  const auto context = finding(0)->context();
  const auto left = krMake<KRIssueObject>();
  left->setPersons(finding(0)->persons());
  context->addIssueObject(left.get());
  for (const IKRPerson* person : left->persons()) result()->addObjectForPerson(left.get(), person);
  context->removeIssueObject(left.get());
  const FindingPlaces places(*result());
  FixStep step(book(), *result(), places);
  fixIn(step, *finding(0), KRHandleNameMergeContact);
  step.undo();
  EXPECT_EQ(context->objects().count(), 1U);
  EXPECT_FALSE(context->objects().contains(left.get()));
}

TEST_F(FixStepTest, FindingsAndContextsComeBackAtTheirPlaces) {
  for (const auto lines : {kBell, kCole, kNobody, kDale}) add(lines);
  scan({KRIssueSpacingInTheFirstName, KRIssueBlankName, KRIssueInvalidCharacters});
  const auto before = state();
  const FindingPlaces places(*result());
  std::vector<FixStep> steps;
  for (size_t i = 0; i < 4; ++i) {
    steps.emplace_back(book(), *result(), places);
    fixIn(steps.back(), *finding(0), KRHandleNameIgnore);
  }
  EXPECT_TRUE(result()->contexts().isEmpty());
  for (; !steps.empty(); steps.pop_back()) steps.back().undo();
  EXPECT_EQ(state(), before);
}

}  // namespace
