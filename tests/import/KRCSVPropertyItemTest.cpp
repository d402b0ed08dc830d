#include "import/KRCSVPropertyItem.h"

#include <gtest/gtest.h>

namespace {

TEST(KRCSVPropertyItem, KeepsLabelAndColumn) {
  KRCSVPropertyItem item;
  EXPECT_TRUE(item.label().isNothing());
  EXPECT_EQ(item.index(), 0);
  item.setLabel("First"_kr);
  item.setIndex(7);
  EXPECT_EQ(item.label(), "First");
  EXPECT_EQ(item.index(), 7);
}

}  // namespace
