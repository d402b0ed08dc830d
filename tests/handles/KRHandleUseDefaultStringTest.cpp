#include "handles/KRHandleUseDefaultString.h"

#include <gtest/gtest.h>

#include "issues/KRIssueNames.h"
#include "tests/support/KRFix.h"

namespace {

/// The text that stands in for a missing name, for the time of a test.
class DefaultString {
 public:
  explicit DefaultString(const KRString& text) : before_(KRDefaultString) { KRDefaultString = text; }
  ~DefaultString() { KRDefaultString = before_; }
  DefaultString(const DefaultString&) = delete;
  DefaultString& operator=(const DefaultString&) = delete;

 private:
  const KRString before_;
};

template <class Person>
class KRHandleUseDefaultStringTest : public testing::Test {
 protected:
  static KRRef<KRObjectPersonName> fixed(const KRPersonSketch& sketch, const KRString& issueName = KRIssueBlankName) {
    const KRFix fix(issueName, krPerson<Person>(sketch));
    krMake<KRHandleUseDefaultString>()->fix(fix.finding());
    EXPECT_TRUE(fix.isGone());
    return fix.name();
  }
};
TYPED_TEST_SUITE(KRHandleUseDefaultStringTest, KRPersonKinds);

TYPED_TEST(KRHandleUseDefaultStringTest, FillsMissingFirstAndLastAndKeepsTheMiddle) {
  const auto both = this->fixed({.middle = "Q"_kr});
  ASSERT_TRUE(both);
  EXPECT_EQ(both->first(), "???");
  EXPECT_EQ(both->middle(), "Q");
  EXPECT_EQ(both->last(), "???");
  const auto one = this->fixed({.first = "Ann"_kr});
  ASSERT_TRUE(one);
  EXPECT_EQ(one->first(), "Ann");
  EXPECT_TRUE(one->middle().isNothing());
  EXPECT_EQ(one->last(), "???");
}

TYPED_TEST(KRHandleUseDefaultStringTest, KeepsAnEmptyPartEmpty) {
  const auto name = this->fixed({.last = ""_kr});
  ASSERT_TRUE(name);
  EXPECT_EQ(name->first(), "???");
  EXPECT_EQ(name->last(), ""_kr);
}

TYPED_TEST(KRHandleUseDefaultStringTest, FillsANameOfNoParts) {
  const auto name = this->fixed({.hasName = true});
  ASSERT_TRUE(name);
  EXPECT_EQ(name->first(), "???");
  EXPECT_TRUE(name->middle().isNothing());
  EXPECT_EQ(name->last(), "???");
}

TYPED_TEST(KRHandleUseDefaultStringTest, LeavesAPersonWithoutNameValueAlone) {
  EXPECT_FALSE(this->fixed({}));
  EXPECT_FALSE(this->fixed({.company = "Acme"_kr, .isOrganization = true}));
}

TYPED_TEST(KRHandleUseDefaultStringTest, ChangesTheNameWhateverTheIssue) {
  const auto name = this->fixed({.last = "Lee"_kr}, KRIssueUnusualTitle);
  ASSERT_TRUE(name);
  EXPECT_EQ(name->first(), "???");
}

TYPED_TEST(KRHandleUseDefaultStringTest, TakesTheTextThatTheHostAssigned) {
  const DefaultString text("(unknown)"_kr);
  const auto name = this->fixed({.last = "Lee"_kr});
  ASSERT_TRUE(name);
  EXPECT_EQ(name->first(), "(unknown)");
}

TEST(KRHandleUseDefaultString, ReadsAValueThatHoldsNoNameAsMissingParts) {
  const auto person = krMake<KRHostPerson>();
  person->setValue(krMake<KRMutableSingleValue>(), KRProPertyName);
  const KRFix fix(KRIssueBlankName, person);
  krMake<KRHandleUseDefaultString>()->fix(fix.finding());
  ASSERT_TRUE(fix.name());
  EXPECT_EQ(fix.name()->first(), "???");
  EXPECT_EQ(fix.name()->last(), "???");
}

TEST(KRHandleUseDefaultString, ReportsOnce) {
  krExpectReportedOnce<KRHandleUseDefaultString>(KRIssueBlankName, krPerson<KRHostPerson>({.middle = "Q"_kr}));
  krExpectReportedOnce<KRHandleUseDefaultString>(KRIssueBlankName, krPerson<KRHostPerson>({}));
}

TEST(KRHandleUseDefaultString, SaysWhatItDoesWithTheQuestionMarksThemselves) {
  const DefaultString text("(unknown)"_kr);
  krExpectTexts<KRHandleUseDefaultString>({
      {KRIssueBlankName, "Use \"???\" to replace the empty name", "Use \"???\" instead of the empty name."},
      {KRIssueUnusualTitle, "Use \"???\" to replace the empty name", "Use \"???\" instead of the empty name."},
  });
}

}  // namespace
