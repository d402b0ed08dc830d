#include "issues/KRStoredSettings.h"

#include <algorithm>
#include <span>
#include <utility>

#include "platform/KRKeyedArchiver.h"
#include "platform/KRPreferences.h"
#include "platform/KRValue.h"

KRRef<KRObject> krUnarchivedSettings(std::string_view data, const KRArchiveClass& archiveClass) {
  const auto root = KRKeyedUnarchiver::unarchive(data, std::span(&archiveClass, 1));
  return root ? KRRef<KRObject>(root->object()) : KRRef<KRObject>();
}

namespace {

KRRef<KRObject> settingsIn(const KRValue& stored, const KRArchiveClass& archiveClass) {
  const auto* data = stored.as<KRData>();
  return data != nullptr ? krUnarchivedSettings(data->bytes(), archiveClass) : KRRef<KRObject>();
}

KRValue archived(KRObject& object) {
  return KRValue(krMake<KRData>(KRKeyedArchiver::archivedData(KRValue(KRRef<KRObject>(&object)))));
}

bool contains(const KRStringList& texts, const KRString& text) {
  return std::find(texts.begin(), texts.end(), text) != texts.end();
}

}  // namespace

KRRef<KRObject> krStoredSettings(const KRString& key, const KRArchiveClass& archiveClass) {
  return settingsIn(KRPreferences::standard()->value(key), archiveClass);
}

void krStoreSettings(KRObject& object, const KRString& key) {
  KRPreferences::standard()->setValue(archived(object), key);
}

void krUpdateSettings(const KRString& key, const KRArchiveClass& archiveClass,
                      std::function<KRRef<KRObject>(const KRRef<KRObject>& stored)> change) {
  const auto archive = [archiveClass, change = std::move(change)](const KRValue& now) {
    return archived(*change(settingsIn(now, archiveClass)));
  };
  KRPreferences::standard()->update(key, archive);
}

KRStringList krMergedTexts(const KRStringList& stored, const KRStringList& before, const KRStringList& mine) {
  if (stored == before) return mine;
  KRStringList merged;
  for (const KRString& text : stored) {
    if (contains(mine, text) || !contains(before, text)) merged.push_back(text);
  }
  for (const KRString& text : mine) {
    if (!contains(before, text) && !contains(merged, text)) merged.push_back(text);
  }
  return merged;
}
