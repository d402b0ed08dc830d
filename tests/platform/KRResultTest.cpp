#include "platform/KRResult.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

KRResult<std::unique_ptr<int>> half(int number) {
  if (number % 2 != 0) return KRError{KRErrorCode::InvalidArgument, "an odd number has no half"};
  return std::make_unique<int>(number / 2);
}

TEST(KRResult, HoldsAValueOrAFailure) {
  KRResult<std::unique_ptr<int>> good = half(4);
  ASSERT_TRUE(good.isOk());
  EXPECT_EQ(**good, 2);
  const std::unique_ptr<int> taken = std::move(good).value();
  EXPECT_EQ(*taken, 2);
  const auto bad = half(3);
  EXPECT_FALSE(bad);
  EXPECT_EQ(bad.error().code, KRErrorCode::InvalidArgument);
  EXPECT_EQ(bad.error().sentence, "an odd number has no half");
}

TEST(KRResult, SuccessWithoutAValue) {
  const KRResult<void> good;
  EXPECT_TRUE(good);
  const KRResult<void> bad = KRError{KRErrorCode::Busy, "somebody has it"};
  EXPECT_FALSE(bad);
  EXPECT_EQ(bad.error().code, KRErrorCode::Busy);
}

TEST(KRResultDeathTest, ReadingWhatIsNotThereStopsTheProcess) {
  EXPECT_DEATH(static_cast<void>(half(3).value()), "the value of a failure");
  EXPECT_DEATH(static_cast<void>(half(4).error()), "the error of a success");
  EXPECT_DEATH(static_cast<void>(KRResult<void>().error()), "the error of a success");
}

}  // namespace
