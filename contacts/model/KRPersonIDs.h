#pragma once

#include <cstdint>
#include <mutex>
#include <unordered_map>

#include "contacts/model/IKRPerson.h"
#include "platform/KRList.h"
#include "platform/KRZeroMemory.h"

class ABPerson;

/// Makes the identifiers of the persons of one book unique: of several persons with the same `baseID` the first keeps
/// it, the others get a suffix by order of appearance. Persons that have been given theirs keep it when others come or
/// go, and one that left and comes back has it again unless it was given to another meanwhile. Safe from any thread as
/// long as nobody changes the list.
class KRPersonIDs {
 public:
  KRPersonIDs();

  /// A new random identifier, such as no other person has. Safe from any thread.
  static KRString newIdentifier();

  /// A number of this table that no other one of the process has, from 1.
  uint32_t serial() const noexcept { return serial_; }
  /// Assigns the identifiers of all records that have none yet. Linear in those when they stand at the end of the list.
  /// The person that asks gets one in any case.
  void assign(const KRList<IKRPerson>& persons, const ABPerson* asking);

  /// Lets go of the identifier of a person that leaves, so that another one, or the person's own copy, can have it.
  void release(const ABPerson& person);
  /// Keeps the identifier for a person that comes back with it; false when another one has it by now.
  bool reclaim(const ABPerson& person);

 private:
  bool insert(uint64_t hash);
  void erase(uint64_t hash);
  /// Makes room for so many identifiers.
  void reserve(size_t count);
  void assignOne(const IKRPerson& person);
  uint64_t* used() const noexcept { return static_cast<uint64_t*>(memory_.data()); }
  size_t mask() const noexcept { return size_ - 1; }
  /// Where the hash stands, or the free slot that it would come to.
  size_t slotOf(uint64_t hash) const noexcept;

  std::mutex lock_;
  /// Hashes of the identifiers in use, open addressing; 0 is free.
  KRZeroMemory memory_;
  /// A power of two, at most half of which is taken; 0 at first.
  size_t size_ = 0;
  size_t count_ = 0;
  /// For identifiers that several persons share, by their hash, the last suffix given.
  std::unordered_map<uint64_t, uint32_t> lastSuffix_;
  uint32_t serial_;
};
