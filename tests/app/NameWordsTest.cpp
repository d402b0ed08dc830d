#include "app/NameWords.h"

#include <gtest/gtest.h>

namespace {

TEST(NameWords, AConstantIsKnownInAnyCaseAndAsItIsGuessed) {
  for (const char* word : {"KRFixEditAll", "krfixeditall", "edit-all", "EDIT-ALL"}) {
    EXPECT_TRUE(NameWords::isConstant(word, "KRFixEditAll", "KRFix")) << word;
  }
  for (const char* word : {"", "editall", "EditAll", "kr-fix-edit-all", "-edit-all", "edit-all-"}) {
    EXPECT_FALSE(NameWords::isConstant(word, "KRFixEditAll", "KRFix")) << word;
  }
}

TEST(NameWords, AListHasTheRowsInTheirOrder) {
  struct Row {
    std::string_view shortName;
  };
  const Row rows[] = {{"edit"}, {"add"}};
  EXPECT_EQ(NameWords::list(rows), "edit, add");
}

}  // namespace
