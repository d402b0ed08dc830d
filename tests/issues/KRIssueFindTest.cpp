#include "issues/KRIssueFind.h"

#include <gtest/gtest.h>

#include "tests/support/KRFindings.h"

namespace {

TEST(KRIssueFind, TheBaseFindsNothingAndReportsNothing) {
  const auto find = krMake<KRIssueFind>();
  KRPersonList persons;
  persons.append(krNamed("Ann"));
  int reports = 0;
  EXPECT_FALSE(find->find(&persons, [&](double) { ++reports; }));
  EXPECT_FALSE(find->find(nullptr, KRProgress()));
  EXPECT_EQ(reports, 0);
}

TEST(KRIssueFind, KeepsItsIssue) {
  const auto find = krMake<KRIssueFind>();
  EXPECT_FALSE(find->issue());
  const auto issue = krMake<KRIssue>(KRIssueBlankName, ""_kr);
  find->setIssue(issue);
  EXPECT_EQ(find->issue(), issue);
}

}  // namespace
