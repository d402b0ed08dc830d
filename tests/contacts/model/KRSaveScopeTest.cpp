#include "contacts/model/KRSaveScope.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

/// A book that notes down its saves, and fails as often as it is told to.
class NotingBook : public KRAddressBook {
 public:
  NotingBook(KRString name, std::vector<std::string>& written, bool isSavedFirst = false)
      : KRAddressBook(name, name), written_(written), isSavedFirst_(isSavedFirst) {}

  KRResult<void> saveNow() override {
    if (failures > 0) {
      --failures;
      return KRError{KRErrorCode::NoSpace, "cannot write " + std::string(name().view())};
    }
    written_.emplace_back(name().view());
    return {};
  }
  bool isSavedFirst() const override { return isSavedFirst_; }

  int failures = 0;

 private:
  std::vector<std::string>& written_;
  bool isSavedFirst_;
};

using Names = std::vector<std::string>;

class KRSaveScopeTest : public testing::Test {
 protected:
  Names written_;
  KRRef<NotingBook> home_ = krMake<NotingBook>("home"_kr, written_);
  KRRef<NotingBook> work_ = krMake<NotingBook>("work"_kr, written_);
  KRRef<NotingBook> trash_ = krMake<NotingBook>("trash"_kr, written_, true);
};

TEST_F(KRSaveScopeTest, OutsideAScopeASaveIsDoneAtOnceAndInTheOrderAskedFor) {
  home_->save();
  EXPECT_EQ(written_, Names({"home"}));
  trash_->save();
  EXPECT_EQ(written_, Names({"home", "trash"}));
}

TEST_F(KRSaveScopeTest, CommitWritesTheTrashFirstAndEachBookOnce) {
  KRSaveScope scope;
  home_->save();
  trash_->save();
  work_->save();
  home_->save();
  EXPECT_TRUE(written_.empty());
  EXPECT_EQ(scope.gathered().size(), 3U);
  EXPECT_TRUE(scope.commit());
  EXPECT_EQ(written_, Names({"trash", "home", "work"}));
  EXPECT_TRUE(scope.gathered().empty());
}

TEST_F(KRSaveScopeTest, WithoutCommitNothingIsWritten) {
  {
    KRSaveScope scope;
    home_->save();
  }
  EXPECT_TRUE(written_.empty());
  home_->save();
  EXPECT_EQ(written_, Names({"home"}));
}

TEST_F(KRSaveScopeTest, SavesAfterACommitAreGatheredForTheNext) {
  KRSaveScope scope;
  home_->save();
  EXPECT_TRUE(scope.commit());
  EXPECT_TRUE(scope.commit());
  home_->save();
  EXPECT_EQ(written_, Names({"home"}));
  EXPECT_TRUE(scope.commit());
  EXPECT_EQ(written_, Names({"home", "home"}));
}

TEST_F(KRSaveScopeTest, AnInnerScopeHandsItsBooksToTheOuter) {
  KRSaveScope outer;
  {
    KRSaveScope inner;
    home_->save();
    EXPECT_TRUE(inner.commit());
  }
  {
    KRSaveScope forgotten;
    work_->save();
  }
  EXPECT_TRUE(written_.empty());
  EXPECT_TRUE(outer.commit());
  EXPECT_EQ(written_, Names({"home"}));
}

TEST_F(KRSaveScopeTest, ScopesMayEndInAnyOrder) {
  auto outer = std::make_unique<KRSaveScope>();
  auto inner = std::make_unique<KRSaveScope>();
  outer.reset();
  home_->save();
  EXPECT_TRUE(written_.empty());
  EXPECT_TRUE(inner->commit());
  EXPECT_EQ(written_, Names({"home"}));
  inner.reset();
  work_->save();
  EXPECT_EQ(written_, Names({"home", "work"}));
}

TEST_F(KRSaveScopeTest, WhenTheTrashCannotBeWrittenNothingElseIs) {
  KRSaveScope scope;
  home_->save();
  trash_->save();
  trash_->failures = 1;
  const KRResult<void> saved = scope.commit();
  ASSERT_FALSE(saved);
  EXPECT_EQ(saved.error().code, KRErrorCode::NoSpace);
  ASSERT_EQ(scope.failures().size(), 1U);
  EXPECT_EQ(scope.failures()[0].book, trash_);
  EXPECT_TRUE(written_.empty());

  EXPECT_TRUE(scope.commit());
  EXPECT_TRUE(scope.failures().empty());
  EXPECT_EQ(written_, Names({"trash", "home"}));
}

TEST_F(KRSaveScopeTest, ABookThatCannotBeWrittenKeepsNoOtherFromIt) {
  KRSaveScope scope;
  home_->save();
  trash_->save();
  work_->save();
  home_->failures = 1;
  const KRResult<void> saved = scope.commit();
  ASSERT_FALSE(saved);
  EXPECT_EQ(saved.error().sentence, "cannot write home");
  EXPECT_EQ(written_, Names({"trash", "work"}));
  ASSERT_EQ(scope.gathered().size(), 1U);
  EXPECT_EQ(scope.gathered()[0], home_);
  EXPECT_TRUE(scope.commit());
  EXPECT_EQ(written_, Names({"trash", "work", "home"}));
}

TEST_F(KRSaveScopeTest, AGatheredBookLivesUntilItIsWritten) {
  KRSaveScope scope;
  krMake<NotingBook>("short"_kr, written_)->save();
  EXPECT_TRUE(scope.commit());
  EXPECT_EQ(written_, Names({"short"}));
}

TEST(KRAddressBookSaving, ABookInMemorySucceeds) {
  const auto book = krMake<KRAddressBook>("b"_kr, "Book"_kr);
  EXPECT_TRUE(book->saveNow());
  EXPECT_TRUE(book->load());
  EXPECT_EQ(book->kind(), "memory"_kr);
  EXPECT_TRUE(book->place().isNothing());
}

}  // namespace
