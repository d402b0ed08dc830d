#include "platform/KRLog.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

TEST(KRLog, GivesWholeLinesToTheHostsOwnLog) {
  std::vector<std::string> lines;
  krSetLog([&](KRText line) { lines.emplace_back(line.view()); });
  krLog("cannot open 100%s");
  krLog("");
  krLog(KRText());
  krSetLog(nullptr);
  krLog("goes to the system");
  EXPECT_EQ(lines, (std::vector<std::string>{"cannot open 100%s", ""}));
}

}  // namespace
