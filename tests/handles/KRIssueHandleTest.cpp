#include "handles/KRIssueHandle.h"

#include <gtest/gtest.h>

#include <typeinfo>

#include "handles/KRHandleAddSupport.h"
#include "handles/KRHandleDeleteContact.h"
#include "handles/KRHandleDeleteDublicateProprty.h"
#include "handles/KRHandleDeleteDuplicateContacts.h"
#include "handles/KRHandleDeleteProperty.h"
#include "handles/KRHandleRemoveSpace.h"
#include "handles/KRHandleUseDefaultString.h"
#include "platform/KRSupportFuction.h"
#include "tests/support/KRFindings.h"

namespace {

using Findings = std::vector<KRIssueObject*>;

KRRef<KRIssueHandle> named(const KRString& name) {
  return KRIssueHandle::issueHandleWithName(name);
}

template <class Handle>
bool isMadeFor(const KRString& name) {
  const auto made = named(name);
  const KRIssueHandle& handle = *made;
  return typeid(handle) == typeid(Handle) && handle.name() == name;
}

/// A base handle of that name: what it does about the result is told by the name alone.
void resetFor(const KRString& name, const KRRef<KRIssueObject>& finding) {
  named(name)->resetFindResult(finding.get());
}

TEST(KRIssueHandleNames, EqualTheirConstants) {
  EXPECT_EQ(KRHandleNameDeleteDuplicatePerson, "KRHandleNameDeleteDuplicatePerson");
  EXPECT_EQ(KRHandleNameDeleteDublicatProperty, "KRHandleNameDeleteDublicatProperty");
  EXPECT_EQ(KRHandleNameDeleteProperty, "KRHandleNameDeleteProperty");
  EXPECT_EQ(KRHandleNameAddSupport, "KRHandleNameAddSupport");
  EXPECT_EQ(KRHandleNameDeleteContact, "KRHandleNameDeleteContact");
  EXPECT_EQ(KRHandleNameRemoveSpace, "KRHandleNameRemoveSpace");
  EXPECT_EQ(KRHandleNameUseDefaultString, "KRHandleNameUseDefaultString");
  EXPECT_EQ(KRHandleNameEdit, "KRHandleNameEdit");
  EXPECT_EQ(KRHandleNameMergeContact, "KRHandleNameMergeContact");
  EXPECT_EQ(KRHandleNameIgnore, "KRHandleNameIgnore");
}

TEST(KRIssueHandleFactory, MakesTheClassOfEachName) {
  EXPECT_TRUE(isMadeFor<KRHandleDeleteDuplicateContacts>(KRHandleNameDeleteDuplicatePerson));
  EXPECT_TRUE(isMadeFor<KRHandleDeleteDublicateProprty>(KRHandleNameDeleteDublicatProperty));
  EXPECT_TRUE(isMadeFor<KRHandleDeleteProperty>(KRHandleNameDeleteProperty));
  EXPECT_TRUE(isMadeFor<KRHandleAddSupport>(KRHandleNameAddSupport));
  EXPECT_TRUE(isMadeFor<KRHandleDeleteContact>(KRHandleNameDeleteContact));
  EXPECT_TRUE(isMadeFor<KRHandleRemoveSpace>(KRHandleNameRemoveSpace));
  EXPECT_TRUE(isMadeFor<KRHandleUseDefaultString>(KRHandleNameUseDefaultString));
  EXPECT_TRUE(isMadeFor<KRIssueHandle>(KRHandleNameEdit));
  EXPECT_TRUE(isMadeFor<KRIssueHandle>(KRHandleNameMergeContact));
  EXPECT_TRUE(isMadeFor<KRIssueHandle>(KRHandleNameIgnore));
}

TEST(KRIssueHandleFactory, AnUnknownNameOrNoneMakesAPlainHandleThatBearsIt) {
  EXPECT_TRUE(isMadeFor<KRIssueHandle>("Mend"_kr));
  EXPECT_TRUE(isMadeFor<KRIssueHandle>(""_kr));
  EXPECT_TRUE(isMadeFor<KRIssueHandle>(nullptr));
}

TEST(KRIssueHandleFactory, TwoCallsMakeTwoHandles) {
  EXPECT_NE(named(KRHandleNameEdit), named(KRHandleNameEdit));
}

TEST(KRIssueHandle, KeepsItsInfoAndNeverNeedsAssistance) {
  const auto handle = KRIssueHandle::issueHandleWithName(KRHandleNameAddSupport, KRValue("title"_kr));
  EXPECT_EQ(handle->info().text(), "title");
  handle->setInfo({});
  EXPECT_TRUE(handle->info().isNothing());
  EXPECT_TRUE(named(KRHandleNameEdit)->info().isNothing());
  EXPECT_FALSE(handle->needAssist());
}

TEST(KRIssueHandle, ThePersonAddressKeyIsTheDecimalAddress) {
  const auto person = krNamed("Ann");
  EXPECT_EQ(KRIssueHandle::personAd(person.get()).view(), std::to_string(reinterpret_cast<intptr_t>(person.get())));
  EXPECT_EQ(KRIssueHandle::personAd(nullptr), "0");
}

// Edit, Ignore, and any name that is not known.

TEST(KRIssueHandle, PlainHandlesChangeNoContactAndRemoveTheFinding) {
  for (const KRString& name : {KRHandleNameEdit, KRHandleNameIgnore, "Mend"_kr, KRString()}) {
    const auto person = krMake<KRHostPerson>();
    const auto other = krFinding({person});
    const auto finding = krFinding({person});
    const auto result = krResult({krContext({other, finding})});
    named(name)->fix(finding.get());
    EXPECT_EQ(person->changes(), 0);
    EXPECT_EQ(krPlain(result->contexts().first()->objects()), Findings{other.get()});
    EXPECT_EQ(krPlain(result->issueObjectsOfPerson(person.get())), Findings{other.get()});
  }
}

TEST(KRIssueHandle, PlainHandlesDoNotReportProgress) {
  const auto finding = krFinding({krNamed("Ann")});
  const auto result = krResult({krContext({finding})});
  int reports = 0;
  named(KRHandleNameEdit)->fix(finding.get(), [&](int, double) { ++reports; });
  EXPECT_EQ(reports, 0);
  EXPECT_TRUE(result->contexts().isEmpty());
}

TEST(KRIssueHandle, AnEmptiedContextLeavesTheResult) {
  const auto finding = krFinding({krNamed("Ann")});
  const auto context = krContext({finding});
  const auto result = krResult({context, krContext({krFinding({krNamed("Ben")})})});
  named(KRHandleNameIgnore)->fix(finding.get());
  EXPECT_EQ(result->contexts().count(), 1U);
  EXPECT_FALSE(result->contexts().contains(context.get()));
  named(KRHandleNameIgnore)->fix(finding.get());
  EXPECT_EQ(result->contexts().count(), 1U);
}

TEST(KRIssueHandle, FixesFindingsThatStandNowhere) {
  const auto finding = krFinding({krNamed("Ann"), krNamed("Ben")});
  for (const KRString& name :
       {KRHandleNameIgnore, KRHandleNameDeleteContact, KRHandleNameDeleteDuplicatePerson, KRHandleNameMergeContact}) {
    resetFor(name, finding);
    resetFor(name, {});
  }
  const auto context = krContext({finding});
  resetFor(KRHandleNameDeleteContact, finding);
  EXPECT_TRUE(context->objects().isEmpty());
}

TEST(KRIssueHandle, MergesNothingForOtherNames) {
  const auto finding = krFinding({krNamed("Ann")});
  EXPECT_FALSE(named(KRHandleNameEdit)->indirectFix(finding.get()));
}

// Findings that share a deleted person.

TEST(KRIssueHandle, DeletingOnePersonOfAPairRemovesThePair) {
  const auto ann = krNamed("Ann");
  const auto ben = krNamed("Ben");
  const auto pair = krFinding({ben, ann});
  const auto finding = krFinding({ann});
  const auto result = krResult({krContext({pair}), krContext({finding})});
  resetFor(KRHandleNameDeleteContact, finding);
  EXPECT_TRUE(result->contexts().isEmpty());
  EXPECT_EQ(result->issueObjectsOfPerson(ann.get()), nullptr);
  EXPECT_EQ(result->issueObjectsOfPerson(ben.get()), nullptr);
}

TEST(KRIssueHandle, DeletingOnePersonOfThreeLeavesTheOtherTwo) {
  const auto ann = krNamed("Ann");
  const auto ben = krNamed("Ben");
  const auto eve = krNamed("Eve");
  const auto group = krFinding({ben, ann, eve});
  const auto finding = krFinding({ann});
  const auto result = krResult({krContext({group}), krContext({finding})});
  resetFor(KRHandleNameDeleteContact, finding);
  EXPECT_EQ(krPlain(group->persons()), (std::vector<IKRPerson*>{ben.get(), eve.get()}));
  EXPECT_EQ(krPlain(result->contexts().first()->objects()), Findings{group.get()});
  EXPECT_EQ(result->issueObjectsOfPerson(ann.get()), nullptr);
  EXPECT_EQ(krPlain(result->issueObjectsOfPerson(eve.get())), Findings{group.get()});
}

TEST(KRIssueHandle, AFieldFindingGoesWithItsDeletedPerson) {
  const auto ann = krNamed("Ann");
  const auto field = krFinding({ann});
  const auto finding = krFinding({ann});
  const auto other = krFinding({krNamed("Ben")});
  const auto result = krResult({krContext({field, other}), krContext({finding})});
  resetFor(KRHandleNameDeleteContact, finding);
  EXPECT_EQ(krPlain(result->contexts().first()->objects()), Findings{other.get()});
  EXPECT_EQ(result->contexts().count(), 1U);
}

TEST(KRIssueHandle, DeletingAContactDeletesTheFirstPersonOnly) {
  const auto ann = krNamed("Ann");
  const auto ben = krNamed("Ben");
  const auto ofAnn = krFinding({ann});
  const auto ofBen = krFinding({ben});
  const auto finding = krFinding({ann, ben});
  const auto result = krResult({krContext({ofAnn, ofBen}), krContext({finding})});
  resetFor(KRHandleNameDeleteContact, finding);
  EXPECT_EQ(krPlain(result->contexts().first()->objects()), Findings{ofBen.get()});
  EXPECT_EQ(krPlain(result->issueObjectsOfPerson(ben.get())), Findings{ofBen.get()});
}

TEST(KRIssueHandle, DeletingDuplicatesKeepsTheFirstPerson) {
  const auto ann = krNamed("Ann");
  const auto ben = krNamed("Ben");
  const auto eve = krNamed("Eve");
  const auto ofAnn = krFinding({ann});
  const auto ofBen = krFinding({ben});
  const auto ofEve = krFinding({eve});
  const auto all = krFinding({ann, ben, eve, krNamed("Zoe")});
  const auto finding = krFinding({ann, ben, eve});
  const auto result = krResult({krContext({ofAnn, ofBen, ofEve}), krContext({all}), krContext({finding})});
  resetFor(KRHandleNameDeleteDuplicatePerson, finding);
  EXPECT_EQ(krPlain(result->contexts().first()->objects()), Findings{ofAnn.get()});
  EXPECT_EQ(all->persons().count(), 2U);
  EXPECT_EQ(result->contexts().count(), 2U);
  EXPECT_EQ(krPlain(result->issueObjectsOfPerson(ann.get())), (Findings{ofAnn.get(), all.get()}));
}

TEST(KRIssueHandle, MergingDeletesAllPersons) {
  const auto ann = krNamed("Ann");
  const auto ben = krNamed("Ben");
  const auto group = krFinding({ann, ben, krNamed("Eve"), krNamed("Zoe")});
  const auto finding = krFinding({ann, ben});
  const auto result = krResult({krContext({krFinding({ann}), group, krFinding({ben})}), krContext({finding})});
  resetFor(KRHandleNameMergeContact, finding);
  EXPECT_EQ(krPlain(result->contexts().first()->objects()), Findings{group.get()});
  EXPECT_EQ(group->persons().count(), 2U);
  EXPECT_EQ(result->contexts().count(), 1U);
}

TEST(KRIssueHandle, OtherFixesDeleteNobody) {
  for (const KRString& name :
       {KRHandleNameEdit, KRHandleNameIgnore, KRHandleNameDeleteProperty, KRHandleNameDeleteDublicatProperty,
        KRHandleNameAddSupport, KRHandleNameRemoveSpace, KRHandleNameUseDefaultString, "Mend"_kr}) {
    const auto ann = krNamed("Ann");
    const auto other = krFinding({ann});
    const auto finding = krFinding({ann});
    const auto result = krResult({krContext({other, finding})});
    resetFor(name, finding);
    EXPECT_EQ(krPlain(result->issueObjectsOfPerson(ann.get())), Findings{other.get()}) << name.view();
  }
}

TEST(KRIssueHandle, TheFindingsOwnHandleTellsWhoWasDeleted) {
  const auto ann = krNamed("Ann");
  const auto ofAnn = krFinding({ann});
  const auto finding = krFinding({ann});
  const auto result = krResult({krContext({ofAnn}), krContext({finding})});
  finding->setHandle(named(KRHandleNameIgnore));
  resetFor(KRHandleNameDeleteContact, finding);
  EXPECT_EQ(krPlain(result->issueObjectsOfPerson(ann.get())), Findings{ofAnn.get()});
}

TEST(KRIssueHandle, AGroupThatLosesItsMembersOneByOneGoesWithItsLastPair) {
  std::vector<KRRef<IKRPerson>> all;
  for (int i = 0; i < 100; ++i) all.push_back(krNamed("Ann"));
  const auto group = krFinding(all);
  const auto context = krContext({});
  for (const auto& person : all) context->addIssueObject(krFinding({person}).get());
  const auto result = krResult({krContext({group}), context});
  for (size_t left = 100; left > 2; --left) {
    resetFor(KRHandleNameDeleteContact, KRRef<KRIssueObject>(context->objects().first()));
    EXPECT_EQ(group->personCount(), left - 1);
  }
  EXPECT_EQ(krPlain(group->persons()), (std::vector<IKRPerson*>{all[98].get(), all[99].get()}));
  resetFor(KRHandleNameDeleteContact, KRRef<KRIssueObject>(context->objects().first()));
  EXPECT_EQ(result->contexts().count(), 1U);
  EXPECT_EQ(krPlain(result->issueObjectsOfPerson(all[99].get())), Findings{context->objects().first()});
}

TEST(KRIssueHandle, AnIndexedFindingThatNoLongerListsThePersonStays) {
  const auto ann = krNamed("Ann");
  const auto other = krFinding({ann});
  const auto finding = krFinding({ann});
  const auto result = krResult({krContext({other, finding})});
  other->setPersons(KRPersonArray(krNamed("Ben")));
  resetFor(KRHandleNameDeleteContact, finding);
  EXPECT_EQ(krPlain(result->contexts().first()->objects()), Findings{other.get()});
  EXPECT_EQ(krPlain(result->issueObjectsOfPerson(ann.get())), Findings{other.get()});
}

TEST(KRIssueHandle, ADuplicateListedTwiceGoesOnce) {
  const auto ann = krNamed("Ann");
  const auto ben = krNamed("Ben");
  const auto finding = krFinding({ann, ben, ben});
  const auto result = krResult({krContext({krFinding({ben}), krFinding({ann})}), krContext({finding})});
  resetFor(KRHandleNameDeleteDuplicatePerson, finding);
  EXPECT_EQ(result->contexts().first()->objects().count(), 1U);
  EXPECT_EQ(result->issueObjectsOfPerson(ben.get()), nullptr);
}

TEST(KRIssueHandleDeathTest, AFindingWithoutPersonsHasNobodyToDelete) {
  const auto finding = krMake<KRIssueObject>();
  EXPECT_DEATH(resetFor(KRHandleNameDeleteContact, finding), "out of the range");
  EXPECT_DEATH(resetFor(KRHandleNameDeleteDuplicatePerson, finding), "without persons");
  resetFor(KRHandleNameMergeContact, finding);
}

// Texts.

TEST(KRIssueHandle, TitlesByName) {
  EXPECT_EQ(named(KRHandleNameEdit)->title(nullptr), "Edit");
  EXPECT_EQ(named(KRHandleNameMergeContact)->title(nullptr), "Merge");
  EXPECT_EQ(named(KRHandleNameIgnore)->title(nullptr), "Ignore");
  EXPECT_EQ(named("Mend"_kr)->title(nullptr), "Mend");
  EXPECT_TRUE(named(nullptr)->title(nullptr).isNothing());
}

struct Row {
  KRString handle;
  KRString issue;
  const char* text;
};

const char* const kMerged =
    "The duplicate contacts will be merged into the contact in the first column. You can manually edit it.";
const Row kRows[] = {
    {KRHandleNameEdit, KRIssueDuplicateNames, "View Contact details and merge duplicate Contacts."},
    {KRHandleNameEdit, KRIssueBlankName, "View Contact details and add contact name."},
    {KRHandleNameEdit, KRIssueEmailsDuplicatedAmongMultipleContacts,
     "View Contact details and manage duplicate email addresses."},
    {KRHandleNameEdit, KRIssuePhonesDuplicatedAmongMultipleContacts,
     "View Contact details and manage duplicate phone numbers."},
    {KRHandleNameEdit, KRIssueIncompleteName, "View Contact details and complete the missing First or Last name."},
    {KRHandleNameEdit, KRIssueInvalidCharacters, "View Contact details and fix the invalid characters."},
    {KRHandleNameEdit, KRIssueHasCompanyNameNoTitle, "View Contact details and set job title."},
    {KRHandleNameEdit, KRIssueNoteWithSpacingOnly, "View Contact details and add contact notes."},
    {KRHandleNameEdit, KRIssueUnusualTitle, ""},
    {KRHandleNameEdit, nullptr, ""},
    {KRHandleNameMergeContact, KRIssueDuplicateNames, kMerged},
    {KRHandleNameMergeContact, nullptr, kMerged},
    {KRHandleNameIgnore, KRIssueEmailsDuplicatedAmongMultipleContacts, "This conflict will be ignored."},
    {KRHandleNameIgnore, KRIssuePhonesDuplicatedAmongMultipleContacts, "This conflict will be ignored."},
    {"Mend"_kr, KRIssueBlankName, ""},
    {nullptr, KRIssueBlankName, ""},
};

TEST(KRIssueHandle, ExplanationsByNameAndIssue) {
  for (const Row& row : kRows) {
    const auto finding = krFinding({krNamed("Ann")});
    const auto context = krContext({finding}, row.issue);
    EXPECT_EQ(named(row.handle)->resultInfo(finding.get()), row.text) << row.issue.view();
  }
  EXPECT_EQ(named(KRHandleNameEdit)->resultInfo(nullptr), "");
}

TEST(KRIssueHandle, IgnoreExplainsItselfInTheUsersLanguageForMostIssues) {
  const auto finding = krFinding({krNamed("Ann")});
  const auto context = krContext({finding}, KRIssueBlankName);
  const KRString text = named(KRHandleNameIgnore)->resultInfo(finding.get());
  EXPECT_EQ(text, KRSupportFuction::loadString("KR_IssueSolution_Info_Ignored"_kr));
  EXPECT_NE(text, "KR_IssueSolution_Info_Ignored");
}

}  // namespace
