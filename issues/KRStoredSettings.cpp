#include "issues/KRStoredSettings.h"

#include <span>

#include "platform/KRKeyedArchiver.h"
#include "platform/KRPreferences.h"
#include "platform/KRValue.h"

KRRef<KRObject> krUnarchivedSettings(std::string_view data, const KRArchiveClass& archiveClass) {
  const auto root = KRKeyedUnarchiver::unarchive(data, std::span(&archiveClass, 1));
  return root ? KRRef<KRObject>(root->object()) : KRRef<KRObject>();
}

KRRef<KRObject> krStoredSettings(const KRString& key, const KRArchiveClass& archiveClass) {
  const KRValue stored = KRPreferences::standard()->value(key);
  const auto* data = stored.as<KRData>();
  return data != nullptr ? krUnarchivedSettings(data->bytes(), archiveClass) : KRRef<KRObject>();
}

void krStoreSettings(KRObject& object, const KRString& key) {
  const std::string archive = KRKeyedArchiver::archivedData(KRValue(KRRef<KRObject>(&object)));
  KRPreferences::standard()->setValue(KRValue(krMake<KRData>(archive)), key);
}
