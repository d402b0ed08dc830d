#pragma once

#include <cstdint>
#include <mutex>
#include <vector>

#include "contacts/model/IKRPerson.h"
#include "platform/KRList.h"

/// Makes the identifiers of the persons of one book unique: of several persons with the same `baseID` the first keeps
/// it, the others get a suffix by order of appearance. Persons that have been given theirs keep it when others come or
/// go. Safe from any thread as long as nobody changes the list.
class KRPersonIDs {
 public:
  /// Assigns the identifiers of all records that have none yet. Linear in those when they stand at the end of the list.
  void assign(const KRList<IKRPerson>& persons);

 private:
  bool insert(uint64_t hash);
  void grow();
  void assignOne(IKRPerson& person);

  std::mutex lock_;
  /// Hashes of the identifiers in use, open addressing; 0 is free.
  std::vector<uint64_t> used_;
  size_t count_ = 0;
};
