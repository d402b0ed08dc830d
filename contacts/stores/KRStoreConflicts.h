#pragma once

#include <cstddef>
#include <string>

#include "contacts/model/ABPerson.h"

/// The contacts of one save that another program has changed since they were read.
class KRStoreConflicts {
 public:
  void add(const ABPerson& person);
  bool isEmpty() const noexcept { return count_ == 0; }
  /// "Ann Lee and 2 more were changed by another program since reading".
  std::string sentence() const;

 private:
  std::string first_;
  size_t count_ = 0;
};
