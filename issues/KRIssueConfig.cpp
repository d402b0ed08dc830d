#include "issues/KRIssueConfig.h"

#include "issues/KRSharedInstance.h"
#include "issues/KRStoredSettings.h"
#include "platform/KRKeyedArchiver.h"
#include "platform/KRKeyedUnarchiver.h"
#include "platform/KRPreferences.h"

namespace {

constexpr KRString kPreferencesKey = "KR_Addressbook_Config_Key"_kr;
constexpr KRString kSettingKey = "KR_Issue_DuplicateName_Scan"_kr;
constexpr int64_t kAllParts = 7;

const KRArchiveClass& archiveClass() {
  static constexpr KRArchiveClass kClass{
      "KRIssueConfig", [](KRKeyedUnarchiver& coder) { return KRRef<KRObject>(KRIssueConfig::initWithCoder(coder)); }};
  return kClass;
}

KRRef<KRIssueConfig> makeShared() {
  auto stored = krSettingsAs<KRIssueConfig>(krStoredSettings(kPreferencesKey, archiveClass()));
  return stored ? stored : KRIssueConfig::init();
}

KRSharedInstance<KRIssueConfig>& shared() {
  static auto& instance = *new KRSharedInstance<KRIssueConfig>(makeShared);
  return instance;
}

}  // namespace

KRIssueConfig& KRIssueConfig::shareObject() {
  return shared().get();
}

void KRIssueConfig::reloadShared() {
  shared().forget();
}

KRRef<KRIssueConfig> KRIssueConfig::init() {
  return krMake<KRIssueConfig>(kAllParts);
}

KRRef<KRIssueConfig> KRIssueConfig::initWithCoder(KRKeyedUnarchiver& coder) {
  auto config = krMake<KRIssueConfig>(0);
  config->setDuplicateNameScanSetting(coder.decodeInteger(kSettingKey).value_or(0));
  if (config->duplicateNameScanSetting() == 0) config->setting_ = kAllParts;
  return config;
}

KRRef<KRIssueConfig> KRIssueConfig::unarchive(std::string_view data) {
  return krSettingsAs<KRIssueConfig>(krUnarchivedSettings(data, archiveClass()));
}

void KRIssueConfig::setDuplicateNameScanSetting(int64_t setting) {
  if ((setting & kAllParts) == 0) return;
  setting_.store(setting, std::memory_order_relaxed);
  saveToDefault();
}

void KRIssueConfig::saveToDefault() {
  krStoreSettings(*this, kPreferencesKey);
  // What cannot be written now is kept by the store and written with the next change.
  (void)KRPreferences::standard()->flush();
}

KRText KRIssueConfig::archiveClassName() const {
  return archiveClass().name;
}

void KRIssueConfig::encodeWithCoder(KRKeyedArchiver& coder) const {
  coder.encodeInteger(duplicateNameScanSetting(), kSettingKey);
}
