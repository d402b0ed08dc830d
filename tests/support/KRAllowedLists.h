#pragma once

#include "issues/KRNameConstraintManager.h"

/// The lists of allowed prefixes and suffixes for the time of a test; those before come back with its end.
class KRAllowedLists {
 public:
  struct Lists {
    KRStringList prefixes{};
    KRStringList suffixes{};
  };

  explicit KRAllowedLists(const Lists& lists) : before_(current()) { set(lists); }
  ~KRAllowedLists() { set(before_); }
  KRAllowedLists(const KRAllowedLists&) = delete;
  KRAllowedLists& operator=(const KRAllowedLists&) = delete;

  static Lists current() {
    KRNameConstraintManager& manager = KRNameConstraintManager::ShareNameConstrainManager();
    return {manager.prefixItemArray(), manager.suffixItemArray()};
  }

 private:
  static void set(const Lists& lists) {
    KRNameConstraintManager& manager = KRNameConstraintManager::ShareNameConstrainManager();
    manager.setPrefixItemArray(&lists.prefixes);
    manager.setSuffixItemArray(&lists.suffixes);
  }

  const Lists before_;
};
