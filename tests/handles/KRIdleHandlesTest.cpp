// The handles that do nothing and that no factory makes, all together: what there is to say of one is said of each.
#include <gtest/gtest.h>

#include "handles/KRIssueHandleDeleteBlankProperty.h"
#include "handles/KRIssueHandleDeleteContact.h"
#include "handles/KRIssueHandleDeleteDuplicateProperty.h"
#include "handles/KRIssueHandleDeleteEmailContacts.h"
#include "handles/KRIssueHandleMergeContacts.h"
#include "handles/KRIssueHandleUseDefaultString.h"
#include "platform/KRSupportFuction.h"
#include "tests/support/KRFindings.h"

namespace {

/// A result with one finding about two persons who can tell whether they were changed.
class Watched {
 public:
  KRIssueObject* finding() const { return finding_.get(); }
  KRPersonArray persons() const { return finding_->persons(); }
  bool isUnchanged() const {
    return ann_->changes() == 0 && ben_->changes() == 0 && finding_->persons().count() == 2 &&
           result_->contexts().count() == 1 && result_->issueObjectsOfPerson(ann_.get()) != nullptr;
  }

 private:
  KRRef<KRHostPerson> ann_ = krMake<KRHostPerson>();
  KRRef<KRHostPerson> ben_ = krMake<KRHostPerson>();
  KRRef<KRIssueObject> finding_ = krFinding({ann_, ben_});
  KRRef<KRIssueFindResult> result_ = krResult({krContext({finding_})});
};

template <class Handle>
class KRIdleHandlesTest : public testing::Test {};
using Idle =
    testing::Types<KRIssueHandleUseDefaultString, KRIssueHandleDeleteEmailContacts, KRIssueHandleMergeContacts,
                   KRIssueHandleDeleteDuplicateProperty, KRIssueHandleDeleteBlankProperty, KRIssueHandleDeleteContact>;
TYPED_TEST_SUITE(KRIdleHandlesTest, Idle);

TYPED_TEST(KRIdleHandlesTest, FixIssueObjectChangesNeitherContactsNorTheResult) {
  const Watched watched;
  const auto handle = krMake<TypeParam>();
  handle->fixIssueObject(watched.finding());
  handle->fixIssueObject(nullptr);
  EXPECT_TRUE(watched.isUnchanged());
}

TYPED_TEST(KRIdleHandlesTest, DescribesNothing) {
  const Watched watched;
  const KRString text = krMake<TypeParam>()->descriptionForIssueObject(watched.finding());
  // The one about shared e-mails says so with an empty text.
  EXPECT_EQ(text.isNothing(), (!std::is_same_v<TypeParam, KRIssueHandleDeleteEmailContacts>));
  EXPECT_TRUE(text.view().empty());
}

template <class Handle>
void expectFixLeavesTheFinding() {
  const Watched watched;
  const KRRef<KRIssueHandle> handle = krMake<Handle>();
  handle->fix(watched.finding());
  watched.finding()->setHandle(handle);
  watched.finding()->fix();
  EXPECT_TRUE(watched.isUnchanged());
}

TEST(KRIdleHandles, ThoseThatReplaceFixLeaveTheFindingWhereItIs) {
  expectFixLeavesTheFinding<KRIssueHandleMergeContacts>();
  expectFixLeavesTheFinding<KRIssueHandleDeleteDuplicateProperty>();
  expectFixLeavesTheFinding<KRIssueHandleDeleteContact>();
}

TEST(KRIdleHandles, ThoseThatReplaceTheNameHaveNone) {
  EXPECT_TRUE(krMake<KRIssueHandleDeleteEmailContacts>()->name().isNothing());
  EXPECT_TRUE(krMake<KRIssueHandleDeleteBlankProperty>()->name().isNothing());
  EXPECT_TRUE(krMake<KRIssueHandleDeleteContact>()->name().isNothing());
  EXPECT_EQ(krMake<KRIssueHandleUseDefaultString>()->name(),
            KRSupportFuction::loadString("KRIssueHandle_UseDefaultStringInstead"_kr));
}

template <class Handle>
void expectNothingForPersons() {
  const Watched watched;
  const auto handle = krMake<Handle>();
  const KRPersonArray persons = watched.persons();
  EXPECT_TRUE(handle->nameForPersons(persons).isNothing());
  EXPECT_TRUE(handle->noteForPersons(persons).isNothing());
  EXPECT_TRUE(handle->suffixForPersons(persons).isNothing());
  EXPECT_TRUE(handle->titleForPersons(persons).isNothing());
  EXPECT_FALSE(handle->phoneForPersons(persons));
  EXPECT_FALSE(handle->emailForPersons(persons));
}

TEST(KRIdleHandles, AnswerNothingForPersons) {
  expectNothingForPersons<KRIssueHandleMergeContacts>();
  expectNothingForPersons<KRIssueHandleDeleteContact>();
  EXPECT_TRUE(krMake<KRIssueHandleUseDefaultString>()->nameForPersons(Watched().persons()).isNothing());
}

TEST(KRIssueHandleMergeContacts, SaysWhatAMergeWouldDoAndMergesNothing) {
  const Watched watched;
  const auto handle = krMake<KRIssueHandleMergeContacts>();
  EXPECT_EQ(handle->title(watched.finding()), "Merge");
  EXPECT_EQ(handle->resultInfo(watched.finding()),
            "The duplicate contacts will be merged into the contact in the first column. You can manually edit it.");
  const auto phones = krMake<KRMutableMultipleValue>();
  EXPECT_FALSE(handle->multivalueForProperty(KRProPertyPhone, watched.persons(), KRValueType::Phone));
  EXPECT_FALSE(handle->hasValue("1"_kr, phones.get(), KRValueType::Phone));
  EXPECT_FALSE(handle->singleValueForProperty(KRProPertyName, watched.persons()));
  EXPECT_TRUE(watched.isUnchanged());
}

TEST(KRIssueHandleMergeContacts, KeepsTheObjectThatAHostLeavesWithIt) {
  const auto handle = krMake<KRIssueHandleMergeContacts>();
  EXPECT_TRUE(handle->object().isNothing());
  handle->setObject("kept"_kr);
  EXPECT_EQ(handle->object().text(), "kept");
}

TEST(KRIssueHandleDeleteDuplicateProperty, FixesNoField) {
  const Watched watched;
  const auto handle = krMake<KRIssueHandleDeleteDuplicateProperty>();
  handle->fixAdress(watched.finding());
  handle->fixPhoneNumber(watched.finding());
  handle->fixEmail(watched.finding());
  EXPECT_FALSE(handle->fixMultiValue(krMake<KRMutableMultipleValue>().get(), KRProPertyPhone));
  EXPECT_TRUE(watched.isUnchanged());
}

TEST(KRIssueHandleDeleteEmailContacts, FixesNothingAndFindsNoEmail) {
  const Watched watched;
  const auto handle = krMake<KRIssueHandleDeleteEmailContacts>();
  handle->fixEmail(watched.finding());
  handle->fixPhone(watched.finding());
  EXPECT_FALSE(handle->personHasEmail(watched.persons().first(), "ann@example.org"_kr));
  EXPECT_TRUE(watched.isUnchanged());
}

TEST(KRIssueHandleUseDefaultString, IsNotWhatTheFactoryMakes) {
  const auto made = KRIssueHandle::issueHandleWithName(KRHandleNameUseDefaultString);
  EXPECT_EQ(dynamic_cast<const KRIssueHandleUseDefaultString*>(made.get()), nullptr);
}

}  // namespace
