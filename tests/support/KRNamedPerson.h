#pragma once

#include <atomic>

#include "tests/support/KRHostPerson.h"

/// A person of which only the names matter: the one shown, and the transliterated one, which it may not offer.
class KRNamedPerson : public KRHostPerson {
 public:
  explicit KRNamedPerson(KRString displayName, KRString pinyin = {})
      : displayName_(std::move(displayName)), pinyin_(std::move(pinyin)) {}

  KRString displayName() const override { return displayName_; }
  KRString nameChineesPinyin() const override {
    ++asked_;
    return pinyin_;
  }

  /// How often the transliterated name was asked for.
  int asked() const { return asked_; }

 private:
  KRString displayName_;
  KRString pinyin_;
  // Runs on several threads may ask the same person.
  mutable std::atomic<int> asked_ = 0;
};

/// A person that counts as the same as every other one of the same `ID`, as a store's own records may do.
class KRSamePerson : public KRHostPerson {
 public:
  explicit KRSamePerson(KRString ID) : ID_(std::move(ID)) {}

  KRString ID() const override { return ID_; }
  bool isEqual(const KRObject* other) const override {
    const auto* person = dynamic_cast<const KRSamePerson*>(other);
    return person != nullptr && person->ID_ == ID_;
  }
  uint64_t hash() const override { return ID_.hash(); }

 private:
  KRString ID_;
};
