#include "contacts/model/KRTagManager.h"

#include <mutex>
#include <unordered_map>

KRTagManager* KRTagManager::tagManagerWithID(const KRString& ID) {
  static auto* const lock = new std::mutex;
  static auto* const managers = new std::unordered_map<KRString, KRRef<KRTagManager>>;
  const std::lock_guard guard(*lock);
  KRRef<KRTagManager>& manager = (*managers)[ID];
  if (!manager) manager = krMake<KRTagManager>(ID);
  return manager.get();
}
