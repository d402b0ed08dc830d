#pragma once

#include <string_view>

#include "platform/KRKeyedUnarchiver.h"
#include "platform/KRObject.h"
#include "platform/KRString.h"

// Settings objects are kept in the standard preferences as keyed archives of themselves.

/// The object of that class which is archived under the key, or nothing: when nothing is there, and also when what is
/// there is damaged or something else.
KRRef<KRObject> krStoredSettings(const KRString& key, const KRArchiveClass& archiveClass);

/// Archives the object and puts it under the key.
void krStoreSettings(KRObject& object, const KRString& key);

/// The object of that class which the archived bytes hold, or nothing.
KRRef<KRObject> krUnarchivedSettings(std::string_view data, const KRArchiveClass& archiveClass);

/// The same as the class that its decoder makes.
template <class T>
KRRef<T> krSettingsAs(const KRRef<KRObject>& object) {
  return KRRef<T>(dynamic_cast<T*>(object.get()));
}
