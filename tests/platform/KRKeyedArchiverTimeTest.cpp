// Four times the objects may take four times the time, not sixteen times.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/KRArchivedNode.h"
#include "tests/support/KRProcessorTime.h"

namespace {

/// Objects with texts of their own, in lists of ten, so that many records of every kind are written.
KRRef<KRValueList> manyObjects(int count) {
  const auto all = krMake<KRValueList>();
  const auto shared = krMake<KRArchivedNode>("shared"_kr);
  KRRef<KRValueList> group;
  for (int i = 0; i < count; ++i) {
    if (i % 10 == 0) {
      group = krMake<KRValueList>();
      all->values().push_back(group);
    }
    const auto node = krMake<KRArchivedNode>(KRString("name " + std::to_string(i)));
    node->number = i;
    node->value = shared;
    group->values().push_back(node);
  }
  return all;
}

struct Times {
  double write = 1e9;
  double read = 1e9;
};

/// The best of some runs: the time without what disturbed the others.
Times timesFor(int count) {
  Times best;
  const auto objects = manyObjects(count);
  for (int run = 0; run < 3; ++run) {
    const double start = krProcessorSeconds();
    const std::string archive = KRKeyedArchiver::archivedData(objects);
    const double written = krProcessorSeconds();
    const auto read = KRKeyedUnarchiver::unarchive(archive, KRArchivedNode::classes());
    const double end = krProcessorSeconds();
    EXPECT_TRUE(read && (run > 0 || read->isEqual(objects)));
    best.write = std::min(best.write, written - start);
    best.read = std::min(best.read, end - written);
  }
  return best;
}

TEST(KRKeyedArchiverTime, IsLinearInTheNumberOfObjects) {
  const Times few = timesFor(50000);
  const Times many = timesFor(200000);
  // Caches make four times the objects cost up to about six times; a quadratic step would cost sixteen.
  EXPECT_LT(many.write / few.write, 10) << few.write << " " << many.write;
  EXPECT_LT(many.read / few.read, 10) << few.read << " " << many.read;
  RecordProperty("write", std::to_string(many.write));
  RecordProperty("read", std::to_string(many.read));
}

}  // namespace
