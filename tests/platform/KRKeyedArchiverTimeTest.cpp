// Four times the objects may take four times the time, not sixteen times.
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

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

/// An object that makes bytes for being encoded only, which are let go of once they are written.
class Passing : public KRObject {
 public:
  explicit Passing(KRRef<Passing> next) : next_(std::move(next)) {}
  KRText archiveClassName() const override { return "Passing"; }
  void encodeWithCoder(KRKeyedArchiver& coder) const override {
    coder.encode(krMake<KRData>("bytes"), "bytes");
    coder.encode(next_, "next");
  }

 private:
  KRRef<Passing> next_;
};

/// The best time of three for so many objects, each of which is met when the one before is written.
double timeForChain(int count) {
  std::vector<KRRef<Passing>> all;
  for (int i = 0; i < count; ++i) all.push_back(krMake<Passing>(all.empty() ? nullptr : all.back()));
  double best = 1e9;
  for (int run = 0; run < 3; ++run) {
    const double start = krProcessorSeconds();
    EXPECT_FALSE(KRKeyedArchiver::archive(all.back()).isEmpty());
    best = std::min(best, krProcessorSeconds() - start);
  }
  // The longest chain would let go of its objects by recursion.
  while (!all.empty()) {
    const KRRef<Passing> last = std::move(all.back());
    all.pop_back();
  }
  return best;
}

TEST(KRKeyedArchiverTime, IsLinearWhereObjectsGetTheAddressesOfOthersThatWereLetGoOf) {
  const double few = timeForChain(10000);
  const double many = timeForChain(40000);
  EXPECT_LT(many / few, 10) << few << " " << many;
}

}  // namespace
