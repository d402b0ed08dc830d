#pragma once

#include <functional>
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

/// Has `change` make the object to be archived under the key, of the one of that class that is there when it is
/// written, nothing when there is none. It keeps whatever it refers to alive, and touches no preferences.
void krUpdateSettings(const KRString& key, const KRArchiveClass& archiveClass,
                      std::function<KRRef<KRObject>(const KRRef<KRObject>& stored)> change);

/// The list that is stored, with what `mine` has gained and without what it has lost since it was `before`; what is new
/// stands at the end, in its order. `mine` itself when nobody else has changed the list since.
KRStringList krMergedTexts(const KRStringList& stored, const KRStringList& before, const KRStringList& mine);

/// The object of that class which the archived bytes hold, or nothing.
KRRef<KRObject> krUnarchivedSettings(std::string_view data, const KRArchiveClass& archiveClass);

/// The same as the class that its decoder makes.
template <class T>
KRRef<T> krSettingsAs(const KRRef<KRObject>& object) {
  return KRRef<T>(dynamic_cast<T*>(object.get()));
}
