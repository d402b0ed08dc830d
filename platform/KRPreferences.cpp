#include "platform/KRPreferences.h"

#include <mutex>
#include <utility>

#include "platform/KRFilePreferences.h"

namespace {

struct Standard {
  std::mutex lock;
  KRRef<KRPreferences> preferences;
};

/// Never destroyed: a detached thread may still ask while the process ends.
Standard& shared() {
  static auto* const only = new Standard;
  return *only;
}

}  // namespace

KRRef<KRPreferences> KRPreferences::standard() {
  const std::lock_guard lock(shared().lock);
  if (!shared().preferences) shared().preferences = KRFilePreferences::forHost();
  return shared().preferences;
}

void KRPreferences::setStandard(KRRef<KRPreferences> preferences) {
  {
    const std::lock_guard lock(shared().lock);
    std::swap(shared().preferences, preferences);
  }
  // The former store is let go of here, outside the lock: its end may be a host's code.
}
