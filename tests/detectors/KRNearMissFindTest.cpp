#include "detectors/KRNearMissFind.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <string>

#include "detectors/KRIssueFindDuplicatecontacts.h"
#include "issues/KRIssueConfig.h"
#include "issues/KRIssueNames.h"
#include "tests/support/KRPersonSketch.h"
#include "tests/support/KRPrivatePreferences.h"
#include "tests/support/KRRandomSketches.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Reason = KRNearMissReason;

constexpr KRString kPhones = KRIssuePhonesDuplicatedAmongMultipleContacts;
constexpr KRString kEmails = KRIssueEmailsDuplicatedAmongMultipleContacts;

template <class Person>
class KRNearMissFindTest : public testing::Test {
 protected:
  std::vector<KRNearMiss> find(const KRString& issueName, const std::vector<KRPersonSketch>& sketches) {
    list_.removeAll();
    for (const KRPersonSketch& sketch : sketches) list_.append(krPerson<Person>(sketch));
    return KRNearMissFind::find(issueName, &list_, [](double) {});
  }
  std::vector<size_t> places(const KRNearMiss::Side& side) const {
    std::vector<size_t> places;
    for (const IKRPerson* person : side.persons) places.push_back(list_.indexOf(person));
    return places;
  }
  const KRPersonList& list() const { return list_; }

 private:
  KRPrivatePreferences preferences_;
  KRPersonList list_;
};
TYPED_TEST_SUITE(KRNearMissFindTest, KRPersonKinds);

TYPED_TEST(KRNearMissFindTest, TellsNamesApartThatLookTheSame) {
  const auto misses = this->find(KRIssueDuplicateNames, {{.first = "Ann"_kr, .last = "Lee"_kr},
                                                         {.first = "Bob"_kr, .last = "Lee"_kr},
                                                         {.first = "ann"_kr, .last = "L\u00E9e"_kr},
                                                         {.first = "Ann"_kr, .last = "Lee"_kr}});
  ASSERT_EQ(misses.size(), 1U);
  const KRNearMiss& miss = misses[0];
  EXPECT_EQ(miss.issueName, KRIssueDuplicateNames);
  EXPECT_EQ(miss.foldedKey, "first:ann last:lee");
  ASSERT_EQ(miss.sides.size(), 2U);
  EXPECT_EQ(miss.sides[0].key, "first:Annlasst:Lee");
  EXPECT_EQ(miss.sides[1].key, "first:annlasst:L\u00E9e");
  EXPECT_THAT(this->places(miss.sides[0]), ElementsAre(0, 3));
  EXPECT_THAT(this->places(miss.sides[1]), ElementsAre(2));
  ASSERT_EQ(miss.sides[1].parts.size(), 2U);
  EXPECT_EQ(miss.sides[1].parts[1].name, "last");
  EXPECT_EQ(miss.sides[1].parts[1].text, "L\u00E9e");
  EXPECT_EQ(miss.sides[1].parts[1].folded, "lee");
  ASSERT_EQ(miss.differences.size(), 2U);
  EXPECT_EQ(miss.differences[0].part, "first");
  EXPECT_THAT(miss.differences[0].reasons, ElementsAre(Reason::Case));
  EXPECT_THAT(miss.differences[1].reasons, ElementsAre(Reason::Marks));
}

TYPED_TEST(KRNearMissFindTest, NamesWhatDiffers) {
  const auto reasons = [&](const KRString& a, const KRString& b) {
    const auto misses = this->find(KRIssueDuplicateNames, {{.first = a, .last = "x"_kr}, {.first = b, .last = "x"_kr}});
    return misses.size() == 1 && misses[0].differences.size() == 1 ? misses[0].differences[0].reasons
                                                                   : std::vector<Reason>();
  };
  EXPECT_THAT(reasons("Ann"_kr, "aNN"_kr), ElementsAre(Reason::Case));
  EXPECT_THAT(reasons("Zo\u00EB"_kr, "Zoe"_kr), ElementsAre(Reason::Marks));
  EXPECT_THAT(reasons("Mary Ann"_kr, "MaryAnn"_kr), ElementsAre(Reason::Spaces));
  EXPECT_THAT(reasons("O'Neill"_kr, "ONeill"_kr), ElementsAre(Reason::Punctuation));
  EXPECT_THAT(reasons("Mary-Ann"_kr, "mary ann"_kr), ElementsAre(Reason::Case, Reason::Spaces, Reason::Punctuation));
  EXPECT_THAT(reasons("Zo\u00EB"_kr, "Zoe\u0308"_kr), ElementsAre(Reason::Form));
  EXPECT_THAT(reasons(""_kr, KRString()), ElementsAre(Reason::Absent));
  EXPECT_THAT(reasons("Ann"_kr, "Anne"_kr), IsEmpty());
  EXPECT_THAT(reasons("Ann"_kr, "Ann"_kr), IsEmpty());
}

TYPED_TEST(KRNearMissFindTest, ComparesTheNamePartsThatTheSettingChooses) {
  KRIssueConfig::shareObject().setDuplicateNameScanSetting(4);
  EXPECT_THAT(
      this->find(KRIssueDuplicateNames, {{.first = "Ann"_kr, .last = "Lee"_kr}, {.first = "ann"_kr, .last = "Lee"_kr}}),
      IsEmpty());
}

TYPED_TEST(KRNearMissFindTest, LeavesOutWhatFoldsToNothing) {
  EXPECT_THAT(this->find(KRIssueDuplicateNames, {{.first = " "_kr}, {.first = "-"_kr}, {.first = ""_kr}, {}}),
              IsEmpty());
  EXPECT_THAT(this->find(kPhones, {{.phones = {"-"_kr}}, {.phones = {" "_kr}}}), IsEmpty());
}

TYPED_TEST(KRNearMissFindTest, ComparesPhonesByTheirLastNineDigits) {
  const auto misses = this->find(kPhones, {{.phones = {"+44 7700 900101"_kr}},
                                           {.phones = {"x"_kr, "07700-900101"_kr}},
                                           {.phones = {"07700 900101"_kr}},
                                           {.phones = {"07700 900102"_kr}}});
  ASSERT_EQ(misses.size(), 1U);
  EXPECT_EQ(misses[0].foldedKey, "phone:700900101");
  ASSERT_EQ(misses[0].sides.size(), 3U);
  EXPECT_EQ(misses[0].sides[1].key, "07700-900101");
  EXPECT_THAT(this->places(misses[0].sides[2]), ElementsAre(2));
  EXPECT_THAT(misses[0].differences[0].reasons, ElementsAre(Reason::Prefix));
  const auto written = this->find(kPhones, {{.phones = {"555 1234"_kr}}, {.phones = {"(555) 1234"_kr}}});
  ASSERT_EQ(written.size(), 1U);
  EXPECT_THAT(written[0].differences[0].reasons, ElementsAre(Reason::Punctuation));
}

TYPED_TEST(KRNearMissFindTest, ComparesEmailsAndKeepsOrganisationsApart) {
  const auto misses = this->find(kEmails, {{.emails = {"A@b.example"_kr}},
                                           {.emails = {"a@b.example"_kr}},
                                           {.emails = {"a@B.example"_kr}, .isOrganization = true}});
  ASSERT_EQ(misses.size(), 1U);
  EXPECT_EQ(misses[0].sides.size(), 2U);
  EXPECT_THAT(misses[0].differences[0].reasons, ElementsAre(Reason::Case));
}

TYPED_TEST(KRNearMissFindTest, NeedsTwoContacts) {
  EXPECT_THAT(this->find(kPhones, {{.phones = {"555 1234"_kr, "555-1234"_kr}}, {}}), IsEmpty());
  EXPECT_EQ(this->find(kPhones, {{.phones = {"555 1234"_kr, "555-1234"_kr}}, {.phones = {"555 1234"_kr}}}).size(), 1U);
}

TYPED_TEST(KRNearMissFindTest, ComparesWholeContactsPropertyByProperty) {
  const KRPersonSketch ann{.first = "Ann"_kr, .note = "Likes tea."_kr, .phones = {"+44 7700 900101"_kr}};
  KRPersonSketch other = ann;
  other.note = "likes tea"_kr;
  other.phones = {"07700 900101"_kr};
  KRPersonSketch emptyCompany = ann;
  emptyCompany.company = ""_kr;
  KRPersonSketch bob = ann;
  bob.first = "Bob"_kr;
  const auto misses = this->find(KRIssueDuplicateInfo, {ann, bob, other, ann, emptyCompany});
  ASSERT_EQ(misses.size(), 1U);
  ASSERT_EQ(misses[0].sides.size(), 3U);
  EXPECT_THAT(this->places(misses[0].sides[0]), ElementsAre(0, 3));
  std::map<std::string, std::vector<Reason>> differences;
  for (const auto& each : misses[0].differences) differences[std::string(each.part.view())] = each.reasons;
  EXPECT_EQ(differences, (std::map<std::string, std::vector<Reason>>{{"note", {Reason::Case, Reason::Punctuation}},
                                                                     {"phone", {Reason::Prefix}},
                                                                     {"company", {Reason::Absent}}}));
}

// Near-misses and findings together are what a loose comparison finds; neither has anything of the other.
TYPED_TEST(KRNearMissFindTest, ListsExactlyTheKeysThatFoldAlike) {
  KRRandomSketches random(41);
  size_t count = 0;
  for (int round = 0; round < 20; ++round) {
    const auto misses = this->find(KRIssueDuplicateNames, random.list(60));
    std::map<std::string, std::vector<std::string>> keys;
    for (const IKRPerson& person : this->list()) {
      const KRString key = KRIssueFindDuplicatecontacts().keyNameForPerson(&person);
      std::string folded;
      for (const char c : key.view()) folded += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      // The texts of random persons differ in case and in being empty.
      for (const std::string_view label : {"first:", "middle:", "lasst:"}) {
        const size_t at = folded.find(label);
        const size_t end = at + label.size();
        const bool isEmpty =
            at != std::string::npos &&
            (end == folded.size() || folded.compare(end, 6, "middle") == 0 || folded.compare(end, 5, "lasst") == 0);
        if (isEmpty) folded.erase(at, label.size());
      }
      if (folded.empty()) continue;
      auto& same = keys[folded];
      if (std::find(same.begin(), same.end(), key.view()) == same.end()) same.emplace_back(key.view());
    }
    std::vector<std::vector<std::string>> expected;
    for (const auto& [folded, same] : keys) {
      if (same.size() > 1) expected.push_back(same);
    }
    std::vector<std::vector<std::string>> found;
    for (const KRNearMiss& miss : misses) {
      found.emplace_back();
      for (const auto& side : miss.sides) found.back().emplace_back(side.key.view());
    }
    EXPECT_THAT(found, testing::UnorderedElementsAreArray(expected)) << round;
    count += found.size();
  }
  EXPECT_GT(count, 40U);
}

TEST(KRNearMissFindIssues, KnowsTheIssuesAboutSeveralContacts) {
  for (const KRString& issueName : {KRIssueDuplicateNames, KRIssueDuplicateInfo, kPhones, kEmails}) {
    EXPECT_TRUE(KRNearMissFind::canExplain(issueName));
    EXPECT_THAT(KRNearMissFind::find(issueName, nullptr, [](double) {}), IsEmpty());
  }
  for (const KRString& issueName : {KRIssueBlankName, KRIssueDuplicatePhoneNumber, KRString()}) {
    EXPECT_FALSE(KRNearMissFind::canExplain(issueName));
    const KRPersonList none;
    EXPECT_THAT(KRNearMissFind::find(issueName, &none, [](double) {}), IsEmpty());
  }
}

}  // namespace
