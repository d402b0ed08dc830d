#pragma once

#include <map>
#include <string>

#include "contacts/model/IKRPerson.h"
#include "contacts/model/KRObjectPersonName.h"

/// A person as a host may write one: nothing but the pure operations, over a map. A value of nothing clears.
class KRHostPerson : public IKRPerson {
 public:
  using IKRPerson::setValue;

  KRString ID() const override { return "host person"_kr; }
  KRString addressBookID() const override { return {}; }
  KRString displayName() const override {
    const KRRef<KRStoredValue> value = valueByPropertyName(KRProPertyName);
    const auto* single = dynamic_cast<const KRMutableSingleValue*>(value.get());
    const auto* name = single != nullptr ? single->value().as<KRObjectPersonName>() : nullptr;
    return name != nullptr ? name->displayString() : ""_kr;
  }
  KRRef<KRStoredValue> valueByPropertyName(const KRString& name) const override {
    const auto found = values_.find(std::string(name.view()));
    return found == values_.end() ? KRRef<KRStoredValue>() : found->second;
  }
  void setValue(KRRef<KRStoredValue> value, const KRString& byPropertyName) override {
    ++changes_;
    if (value) {
      values_[std::string(byPropertyName.view())] = std::move(value);
    } else {
      values_.erase(std::string(byPropertyName.view()));
    }
  }

  /// How often a value was set or cleared.
  int changes() const { return changes_; }

 private:
  std::map<std::string, KRRef<KRStoredValue>> values_;
  int changes_ = 0;
};
