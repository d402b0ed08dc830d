#pragma once

#include <map>
#include <string>

#include "issues/KRIssueConfig.h"
#include "issues/KRIssueManager.h"
#include "issues/KRNameConstraintManager.h"
#include "platform/KRPreferences.h"

/// Preferences in memory that count what is written.
class KRCountingPreferences : public KRPreferences {
 public:
  KRValue value(KRText key) override {
    const auto found = values_.find(std::string(key.view()));
    return found == values_.end() ? KRValue() : found->second;
  }
  void setValue(const KRValue& value, KRText forKey) override {
    ++writes_;
    values_[std::string(forKey.view())] = value;
  }
  void remove(KRText key) override {
    ++writes_;
    values_.erase(std::string(key.view()));
  }
  KRResult<void> flush() override {
    ++flushes_;
    return {};
  }

  int writes() const { return writes_; }
  int flushes() const { return flushes_; }

  /// The bytes under the key; "" when there are none.
  std::string bytes(KRText key) {
    const KRValue stored = value(key);
    const auto* data = stored.as<KRData>();
    return data != nullptr ? std::string(data->bytes()) : std::string();
  }

 private:
  std::map<std::string, KRValue> values_;
  int writes_ = 0;
  int flushes_ = 0;
};

/// Gives the shared settings a store of their own for the time of a test, and the former one back afterwards.
class KRPrivatePreferences {
 public:
  KRPrivatePreferences() { use(store_); }
  ~KRPrivatePreferences() { use(before_); }
  KRPrivatePreferences(const KRPrivatePreferences&) = delete;
  KRPrivatePreferences& operator=(const KRPrivatePreferences&) = delete;

  KRCountingPreferences* operator->() const { return store_.get(); }

  /// Has the shared settings read the store again, as a new process would.
  static void reload() {
    KRIssueManager::reloadShared();
    KRIssueConfig::reloadShared();
    KRNameConstraintManager::reloadShared();
  }

 private:
  static void use(const KRRef<KRPreferences>& store) {
    KRPreferences::setStandard(store);
    reload();
  }

  const KRRef<KRPreferences> before_ = KRPreferences::standard();
  const KRRef<KRCountingPreferences> store_ = krMake<KRCountingPreferences>();
};
