#include "issues/KRIssueConfig.h"

#include <gtest/gtest.h>

#include "platform/KRKeyedArchiver.h"
#include "tests/support/KRPrivatePreferences.h"

namespace {

constexpr KRString kKey = "KR_Addressbook_Config_Key"_kr;

/// The archive of a configuration that holds that number under that key.
std::string archived(int64_t setting, KRText key = "KR_Issue_DuplicateName_Scan") {
  class Archived : public KRObject {
   public:
    Archived(int64_t setting, KRText key) : setting_(setting), key_(key) {}
    KRText archiveClassName() const override { return "KRIssueConfig"; }
    void encodeWithCoder(KRKeyedArchiver& coder) const override { coder.encodeInteger(setting_, key_); }

   private:
    int64_t setting_;
    KRText key_;
  };
  return KRKeyedArchiver::archivedData(KRValue(krMake<Archived>(setting, key)));
}

class KRIssueConfigTest : public testing::Test {
 protected:
  int64_t stored() {
    const auto config = KRIssueConfig::unarchive(preferences_->bytes(kKey));
    return config ? config->duplicateNameScanSetting() : -1;
  }

  KRPrivatePreferences preferences_;
};

TEST_F(KRIssueConfigTest, BeginsWithAllPartsAndIsNotSaved) {
  const KRIssueConfig& config = KRIssueConfig::shareObject();
  EXPECT_EQ(config.duplicateNameScanSetting(), 7);
  EXPECT_TRUE(config.duplicateNameScanFirst());
  EXPECT_TRUE(config.duplicateNameScanMiddle());
  EXPECT_TRUE(config.duplicateNameScanLast());
  EXPECT_TRUE(config.duplicateNameScanFull());
  EXPECT_EQ(preferences_->writes(), 0);
}

TEST_F(KRIssueConfigTest, ANumberWithoutAnyPartChangesAndWritesNothing) {
  KRIssueConfig& config = KRIssueConfig::shareObject();
  for (const int64_t setting : {int64_t{8}, int64_t{0}, int64_t{-8}}) {
    config.setDuplicateNameScanSetting(setting);
    EXPECT_EQ(config.duplicateNameScanSetting(), 7);
  }
  EXPECT_EQ(preferences_->writes(), 0);
  EXPECT_EQ(preferences_->flushes(), 0);
}

TEST_F(KRIssueConfigTest, HigherBitsAreKept) {
  KRIssueConfig& config = KRIssueConfig::shareObject();
  config.setDuplicateNameScanSetting(9);
  EXPECT_EQ(config.duplicateNameScanSetting(), 9);
  EXPECT_TRUE(config.duplicateNameScanFirst());
  EXPECT_FALSE(config.duplicateNameScanMiddle());
  EXPECT_FALSE(config.duplicateNameScanLast());
  EXPECT_FALSE(config.duplicateNameScanFull());
  EXPECT_EQ(preferences_->writes(), 1);
  EXPECT_EQ(preferences_->flushes(), 1);
  EXPECT_EQ(stored(), 9);
}

TEST_F(KRIssueConfigTest, FifteenIsNotFullAlthoughAllPartsAreSet) {
  KRIssueConfig& config = KRIssueConfig::shareObject();
  config.setDuplicateNameScanSetting(15);
  EXPECT_EQ(config.duplicateNameScanSetting(), 15);
  EXPECT_TRUE(config.duplicateNameScanFirst());
  EXPECT_TRUE(config.duplicateNameScanMiddle());
  EXPECT_TRUE(config.duplicateNameScanLast());
  EXPECT_FALSE(config.duplicateNameScanFull());
}

TEST_F(KRIssueConfigTest, TheSettingIsThereAgainInTheNextRun) {
  KRIssueConfig::shareObject().setDuplicateNameScanSetting(4);
  preferences_.reload();
  EXPECT_EQ(KRIssueConfig::shareObject().duplicateNameScanSetting(), 4);
}

TEST_F(KRIssueConfigTest, AnArchiveWithoutAnyPartReadsAsAllAndIsNotWrittenBack) {
  for (const int64_t setting : {int64_t{0}, int64_t{8}}) {
    EXPECT_EQ(KRIssueConfig::unarchive(archived(setting))->duplicateNameScanSetting(), 7);
  }
  EXPECT_EQ(KRIssueConfig::unarchive(archived(3, "another key"))->duplicateNameScanSetting(), 7);
  EXPECT_EQ(preferences_->writes(), 0);
}

TEST_F(KRIssueConfigTest, ReadingAPartWritesItBackAndFlushes) {
  EXPECT_EQ(KRIssueConfig::unarchive(archived(-1))->duplicateNameScanSetting(), -1);
  EXPECT_EQ(preferences_->writes(), 1);
  EXPECT_EQ(preferences_->flushes(), 1);
}

TEST_F(KRIssueConfigTest, ADamagedValueCountsAsNone) {
  for (const KRValue& value : {KRValue(krMake<KRData>("no archive")), KRValue::whole(3)}) {
    preferences_->setValue(value, kKey);
    preferences_.reload();
    EXPECT_EQ(KRIssueConfig::shareObject().duplicateNameScanSetting(), 7);
  }
  EXPECT_FALSE(KRIssueConfig::unarchive(""));
}

}  // namespace
