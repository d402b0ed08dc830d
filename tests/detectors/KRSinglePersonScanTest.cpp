#include "detectors/KRSinglePersonScan.h"

#include <gmock/gmock.h>

#include "detectors/KRIssueFindEmptyNote.h"
#include "detectors/KRIssueFindInvalidCharset.h"
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

}  // namespace
