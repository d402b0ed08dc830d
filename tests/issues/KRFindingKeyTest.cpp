#include "issues/KRFindingKey.h"

#include <gtest/gtest.h>

#include "tests/contacts/vcard/VCardSamples.h"
#include "tests/support/KRFindings.h"

namespace {

KRRef<IKRPerson> person(const std::vector<std::string>& lines) {
  return ABPerson::initWithVCardRepresentation(KRText(std::string_view(krCard(lines))));
}

/// The key of a finding about these persons.
KRString key(const KRString& issue, const std::vector<KRRef<IKRPerson>>& persons, KRValue info = {}) {
  const auto finding = krFinding(persons);
  finding->setInfo(std::move(info));
  const auto context = krContext({finding}, issue);
  return krFindingKey(*finding);
}

/// The key of a finding about one person.
KRString keyOf(const KRString& issue, const std::vector<std::string>& lines) {
  return key(issue, {person(lines)});
}

TEST(KRFindingKey, IsADigestThatNeverChanges) {
  // Files of users hold it.
  EXPECT_EQ(keyOf(KRIssueSpacingInTheFirstName, {"N:Bell;Mary Jane"}),
            keyOf(KRIssueSpacingInTheFirstName, {"N:Bell;Mary Jane", "UID:7"}));
  EXPECT_EQ(keyOf(KRIssueSpacingInTheFirstName, {"N:Bell;Mary Jane"}).view().size(), 64U);
  EXPECT_EQ(key(KRIssueSpacingInTheFirstName, {}), "d72e0948b94bcb05b31dbe17deda6a731c0b25b1ea79ffcc51fc35e01feabbd6");
}

TEST(KRFindingKey, AFindingInNoContextHasNone) {
  EXPECT_TRUE(krFindingKey(*krFinding({person({"N:a"})})).isNothing());
}

TEST(KRFindingKey, DependsOnTheIssueTheInfoAndThePersons) {
  const auto ann = person({"N:;Ann", "TEL:1"});
  const auto bob = person({"N:;Bob", "TEL:1"});
  const KRString first = key(KRIssueDuplicateNames, {ann, bob});
  EXPECT_NE(first, key(KRIssueBlankName, {ann, bob}));
  EXPECT_NE(first, key(KRIssueDuplicateNames, {ann}));
  EXPECT_NE(first, key(KRIssueDuplicateNames, {ann, bob, bob}));
  EXPECT_NE(first, key(KRIssueDuplicateNames, {ann, bob}, "x"_kr));
  EXPECT_EQ(first, key(KRIssueDuplicateNames, {bob, ann}));
}

TEST(KRFindingKey, OfNamesakesPhonesAndEmailsCountAndNotesDoNot) {
  const std::vector<std::string> plain = {"N:;Ann", "TEL;TYPE=HOME:1", "TEL:2"};
  const KRString first = keyOf(KRIssueDuplicateNames, plain);
  EXPECT_EQ(first, keyOf(KRIssueDuplicateNames, {"N:;Ann", "TEL:2", "TEL;TYPE=WORK:1", "NOTE:n", "UID:u"}));
  EXPECT_NE(first, keyOf(KRIssueDuplicateNames, {"N:;Ann", "TEL:1", "TEL:3"}));
  EXPECT_NE(first, keyOf(KRIssueDuplicateNames, {"N:;Ann", "TEL:1", "TEL:2", "EMAIL:a"}));
  EXPECT_NE(first, keyOf(KRIssueDuplicateNames, {"N:Ann;", "TEL:1", "TEL:2"}));
}

TEST(KRFindingKey, OfAFieldTheFieldCounts) {
  const KRString first = keyOf(KRIssueUnusualTitle, {"N:;Ann;;Mag."});
  EXPECT_EQ(first, keyOf(KRIssueUnusualTitle, {"N:;Ann;;Mag.", "TEL:1", "ORG:x"}));
  EXPECT_NE(first, keyOf(KRIssueUnusualTitle, {"N:;Ann;;Dr."}));
}

TEST(KRFindingKey, OfExactDuplicatesEverythingCounts) {
  const KRString first = keyOf(KRIssueDuplicateInfo, {"N:;Ann", "TEL:1"});
  for (const char* line : {"NOTE:n", "ADR:;;way", "CATEGORIES:a", "PHOTO;ENCODING=b:iVBORw0KGgo=", "BDAY:2001-02-03",
                           "X-JABBER:a", "X-ABSHOWAS:COMPANY"}) {
    EXPECT_NE(first, keyOf(KRIssueDuplicateInfo, {"N:;Ann", "TEL:1", line})) << line;
  }
  EXPECT_NE(keyOf(KRIssueDuplicateInfo, {"N:;Ann", "PHOTO;ENCODING=b:iVBORw0KGgo="}),
            keyOf(KRIssueDuplicateInfo, {"N:;Ann", "PHOTO;ENCODING=b:iVBORw0KGAo="}));
}

TEST(KRFindingKey, TextsDoNotRunIntoOneAnother) {
  EXPECT_NE(keyOf(KRIssueDuplicateNames, {"N:b;a"}), keyOf(KRIssueDuplicateNames, {"N:;ab"}));
  EXPECT_NE(keyOf(KRIssueDuplicateNames, {"N:a", "TEL:1", "TEL:2"}), keyOf(KRIssueDuplicateNames, {"N:a", "TEL:12"}));
  EXPECT_NE(keyOf(KRIssueDuplicateNames, {"N:a", "TEL:1"}), keyOf(KRIssueDuplicateNames, {"N:a", "EMAIL:1"}));
}

TEST(KRPersonDigest, ChangesWithEveryValueAndItsLabel) {
  const KRString first = krPersonDigest(*person({"N:;Ann", "TEL;TYPE=HOME:1", "TEL:2"}));
  EXPECT_EQ(first, krPersonDigest(*person({"N:;Ann", "TEL;TYPE=HOME:1", "TEL:2", "UID:3", "X-A:1"})));
  EXPECT_NE(first, krPersonDigest(*person({"N:;Ann", "TEL;TYPE=WORK:1", "TEL:2"})));
  EXPECT_NE(first, krPersonDigest(*person({"N:;Ann", "TEL:2", "TEL;TYPE=HOME:1"})));
  EXPECT_NE(first, krPersonDigest(*person({"N:;Ann", "TEL;TYPE=HOME:1", "TEL:2", "NOTE:n"})));
}

}  // namespace
