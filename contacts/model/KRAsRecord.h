#pragma once

#include <typeinfo>

#include "contacts/model/ABPerson.h"

/// The person as a record, or null for one of another class.
inline const ABPerson* krAsRecord(const IKRPerson& person) {
  // Nearly every person is one, which is sooner told so.
  if (typeid(person) == typeid(ABPerson)) return static_cast<const ABPerson*>(&person);
  return dynamic_cast<const ABPerson*>(&person);
}
