#include "contacts/stores/KRStoreConflicts.h"

void KRStoreConflicts::add(const ABPerson& person) {
  if (count_++ != 0) return;
  first_ = person.showName().view();
  if (first_.empty()) first_ = "a contact without a name";
}

std::string KRStoreConflicts::sentence() const {
  const std::string others = count_ == 1 ? " was" : " and " + std::to_string(count_ - 1) + " more were";
  return first_ + others + " changed by another program since reading";
}
