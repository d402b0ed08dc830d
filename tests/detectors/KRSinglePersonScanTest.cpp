#include "detectors/KRSinglePersonScan.h"

#include <gmock/gmock.h>

#include <random>
#include <string>

#include "detectors/KRIssueFindEmptyNote.h"
#include "detectors/KRIssueFindInvalidCharset.h"
#include "issues/KRIssueNames.h"
#include "tests/support/KRAllowedLists.h"
#include "tests/support/KRScan.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

KRRef<KRIssue> anIssue() {
  return krIssueNamed("an issue of this test"_kr);
}

TEST(KRSinglePersonScan, AnswersNothingForNoListAndForAnEmptyOne) {
  KRIssueFindEmptyNote detector;
  detector.setIssue(anIssue());
  std::vector<double> progress;
  const auto note = [&](double percent) { progress.push_back(percent); };
  EXPECT_FALSE(detector.find(nullptr, note));
  const KRPersonList empty;
  EXPECT_FALSE(detector.find(&empty, note));
  EXPECT_THAT(progress, IsEmpty());
}

TEST(KRSinglePersonScan, AnswersNothingForPersonsWithoutFindingsButReportsThem) {
  const KRScan scan = KRScan::of<KRIssueFindEmptyNote, KRHostPerson>({{.note = "x"_kr}, {.note = "y"_kr}});
  EXPECT_FALSE(scan.context());
  EXPECT_THAT(scan.progress(), ElementsAre(0.0, 50.0));
}

TEST(KRSinglePersonScan, MakesTheContextWithTheDetectorsIssueAndInTheOrderOfPersons) {
  const auto issue = anIssue();
  KRIssueFindEmptyNote detector;
  detector.setIssue(issue);
  KRPersonList persons;
  // Persons whose order by name is not that of the list.
  for (const char* first : {"Zoe", "Ann", "Mia"}) persons.append(krPerson<KRHostPerson>({.first = KRString(first)}));
  const auto context = detector.find(&persons, [](double) {});
  ASSERT_TRUE(context);
  EXPECT_EQ(context->issue(), issue);
  size_t place = 0;
  for (KRIssueObject& finding : context->issueObjects()) {
    EXPECT_EQ(finding.persons().first(), persons.at(place++));
    EXPECT_EQ(finding.issueContext(), context);
  }
  EXPECT_EQ(place, 3U);
}

TEST(KRSinglePersonScan, StartsAfreshOnEveryRun) {
  KRIssueFindEmptyNote detector;
  detector.setIssue(anIssue());
  KRPersonList persons;
  persons.append(krPerson<KRHostPerson>({}));
  const auto first = detector.find(&persons, [](double) {});
  const auto second = detector.find(&persons, [](double) {});
  ASSERT_TRUE(first && second);
  EXPECT_FALSE(first == second);
  EXPECT_EQ(first->issueObjects().count(), 1U);
  EXPECT_EQ(second->issueObjects().count(), 1U);
}

TEST(KRSinglePersonScan, ComputesPercentagesInSinglePrecision) {
  const KRScan scan = KRScan::of<KRIssueFindEmptyNote, KRHostPerson>({{}, {}, {}});
  EXPECT_THAT(scan.progress(),
              ElementsAre(0.0, static_cast<double>(100.0F / 3.0F), static_cast<double>(200.0F / 3.0F)));
  EXPECT_EQ(scan.progress()[1], 33.333332061767578125);
  EXPECT_EQ(scan.progress()[2], 66.66666412353515625);
}

TEST(KRSinglePersonScan, ReadsTheNumberOfPersonsAgainForEachValue) {
  KRIssueFindInvalidCharset detector;
  detector.setIssue(anIssue());
  KRPersonList persons;
  persons.append(krPerson<KRHostPerson>({}));
  persons.append(krPerson<KRHostPerson>({}));
  std::vector<double> progress;
  detector.find(&persons, [&](double percent) {
    progress.push_back(percent);
    if (progress.size() == 1) {
      persons.append(krPerson<KRHostPerson>({}));
      persons.append(krPerson<KRHostPerson>({}));
    }
  });
  EXPECT_THAT(progress, ElementsAre(50.0, 50.0, 75.0, 100.0));
}

TEST(KRSinglePersonScan, ChangesNoPerson) {
  const auto person = krMake<KRHostPerson>();
  KRIssueFindEmptyNote detector;
  detector.setIssue(anIssue());
  KRPersonList persons;
  persons.append(person);
  ASSERT_TRUE(detector.find(&persons, [](double) {}));
  EXPECT_EQ(person->changes(), 0);
}

TEST(KRSinglePersonScanDeathTest, StopsWithoutAProgressCallback) {
  KRIssueFindEmptyNote detector;
  detector.setIssue(anIssue());
  KRPersonList persons;
  persons.append(krPerson<KRHostPerson>({}));
  EXPECT_DEATH(detector.find(&persons, KRProgress()), "progress callback is required");
}

/// A card of lines that detectors look at, with texts that they find something in as often as not.
std::string randomCard(std::mt19937& random) {
  const auto pick = [&](std::initializer_list<const char*> texts) {
    return std::string(texts.begin()[random() % texts.size()]);
  };
  const auto line = [&](const std::string& start, std::initializer_list<const char*> texts) {
    return random() % 2 == 0 ? std::string() : start + pick(texts) + "\r\n";
  };
  std::string card = "BEGIN:VCARD\r\nVERSION:3.0\r\n";
  card += "N:" + pick({"", "Lee", " ", "van Dam"}) + ";" + pick({"", "Ann", "Mary Ann", " ", "\u738B"}) + ";;" +
          pick({"", "Dr.", "dr.", "Count"}) + ";" + pick({"", "Jr.", "III"}) + "\r\n";
  card += line("X-ABShowAs:", {"COMPANY", "PERSON"}) + line("ORG:", {"", "Acme", " ", ";Sales"});
  card += line("TITLE:", {"", "Clerk", " "}) + line("NICKNAME:", {"", " ", "   ", "Al", " Al"});
  card += line("NOTE:", {"", " ", "\\n", "Likes tea."});
  for (auto i = random() % 3; i > 0; --i) card += line("TEL:", {"", "555 1234", "555.1234", "12a", "\u4E30"});
  for (auto i = random() % 3; i > 0; --i) card += line("EMAIL:", {"", "a@b", "a@@b", "bob"});
  return card + "END:VCARD\r\n";
}

// What is read as views of a card against what a host's person answers that holds the values read from the same card.
TEST(KRSinglePersonScan, FindsTheSameInCardsAndInTheValuesOfCards) {
  const KRAllowedLists lists({.prefixes = {"Dr."_kr}, .suffixes = {"Jr."_kr}});
  std::mt19937 random(7);
  KRPersonList cards;
  KRPersonList hosts;
  for (int i = 0; i < 2000; ++i) {
    const std::string text = randomCard(random);
    const auto card = ABPerson::initWithVCardRepresentation(KRText(text));
    const auto host = krMake<KRHostPerson>();
    ASSERT_TRUE(card) << text;
    cards.append(card.get());
    hosts.append(host.get());
  }
  const auto find = [](const KRString& issueName, const KRPersonList& persons) {
    const auto issue = krIssueNamed(issueName);
    std::vector<std::string> found;
    const auto context = KRIssueFind::issueFindWithIssue(issue.get())->find(&persons, [](double) {});
    if (!context) return found;
    size_t place = 0;
    for (KRIssueObject& finding : context->issueObjects()) {
      while (persons.at(place) != finding.persons().first()) ++place;
      found.push_back(std::to_string(place) + ": " + std::string(finding.describe().view()) + " " +
                      std::string(finding.info().description().view()));
    }
    return found;
  };
  const auto issueNames = {KRIssueIncompleteName, KRIssueInvalidCharacters,       KRIssueNoteWithSpacingOnly,
                           KRIssueUnusualTitle,   KRIssueUnusualSuffix,           KRIssueSpacingInTheFirstName,
                           KRIssueBlankName,      KRIssueNicknameWithSpacingOnly, KRIssueHasCompanyNameNoTitle};
  std::vector<std::vector<std::string>> fromCards;
  for (const KRString& issueName : issueNames) fromCards.push_back(find(issueName, cards));
  // Only now, since a record that has handed out a stored value reads from that.
  for (size_t i = 0; i < cards.count(); ++i) {
    for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
      hosts.at(i)->setValue(cards.at(i)->valueByProperty(property), property);
    }
  }
  size_t row = 0;
  for (const KRString& issueName : issueNames) {
    EXPECT_FALSE(fromCards[row].empty()) << issueName.view();
    EXPECT_EQ(fromCards[row++], find(issueName, hosts)) << issueName.view();
  }
}

}  // namespace
