#include "issues/KRFindingPersons.h"

#include <mutex>
#include <utility>

#include "platform/KRAtomic.h"

KRPersonArray KRFindingPersons::get() const {
  const std::lock_guard lock(krFieldLock(this));
  if (left_ && array_.isEmpty()) array_ = KRPersonArray(left_->copy());
  return array_;
}

const KRPersonArray& KRFindingPersons::borrow() const {
  if (left_) get();
  return array_;
}

void KRFindingPersons::set(KRPersonArray persons) {
  std::unique_ptr<KRPersonList> old;
  const std::lock_guard lock(krFieldLock(this));
  std::swap(array_, persons);
  std::swap(left_, old);
}

bool KRFindingPersons::isLong() const {
  if (left_) return true;
  if (array_.count() <= kLong) return false;
  auto list = std::make_unique<KRPersonList>();
  list->reserve(array_.count());
  for (IKRPerson* person : array_) list->append(person);
  left_ = std::move(list);
  return true;
}

bool KRFindingPersons::contains(const IKRPerson* person) const {
  return isLong() ? left_->contains(person) : array_.contains(person);
}

void KRFindingPersons::remove(const IKRPerson* person) {
  if (!isLong()) {
    if (array_.contains(person)) set(array_.without(person));
  } else if (left_->remove(person)) {
    KRPersonArray outdated;
    const std::lock_guard lock(krFieldLock(this));
    std::swap(array_, outdated);
  }
}
