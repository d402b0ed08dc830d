#include "contacts/KRNameCache.h"

#include <mutex>

KRString KRNameCache::find(const KRString& key) const {
  const std::shared_lock lock(lock_);
  const auto found = names_.find(key);
  return found != names_.end() ? found->second : KRString();
}

void KRNameCache::set(const KRString& key, KRString name) {
  if (key.isNothing()) return;
  const std::lock_guard lock(lock_);
  names_.insert_or_assign(key, std::move(name));
}

void KRNameCache::remove(const KRString& key) {
  const std::lock_guard lock(lock_);
  names_.erase(key);
}

size_t KRNameCache::count() const {
  const std::shared_lock lock(lock_);
  return names_.size();
}
