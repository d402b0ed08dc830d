#include "contacts/model/KRLabelTable.h"

#include <array>
#include <atomic>
#include <mutex>

namespace {

struct Entry {
  KRRef<KRLabel> label;
  KRString name;
  uint64_t hash = 0;
};

/// Names by number, and an index over them with open addressing. Entries are added under the lock and never changed, so
/// that readers need none.
struct Table {
  static constexpr size_t kSlots = size_t{KRLabelTable::kCapacity} * 2;

  std::array<std::atomic<const Entry*>, KRLabelTable::kCapacity> entries{};
  std::array<std::atomic<uint16_t>, kSlots> slots{};
  std::mutex lock;
  uint16_t last = 0;
};

/// Made on first use and never destroyed, as labels may be asked for until the process ends.
Table& table() {
  static Table& shared = *new Table;
  return shared;
}

/// The number of the name, or 0; `slot` is where it stands or would stand.
uint16_t find(const Table& table, KRText name, uint64_t hash, size_t& slot) noexcept {
  slot = hash % Table::kSlots;
  while (true) {
    const uint16_t number = table.slots[slot].load(std::memory_order_acquire);
    if (number == 0) return 0;
    const Entry* entry = table.entries[number].load(std::memory_order_acquire);
    if (entry->hash == hash && entry->name == name) return number;
    slot = (slot + 1) % Table::kSlots;
  }
}

}  // namespace

uint16_t KRLabelTable::number(KRText name) {
  if (name.isNothing() || name.size() > kLongestName) return 0;
  Table& names = table();
  const uint64_t hash = name.hash();
  size_t slot = 0;
  if (const uint16_t known = find(names, name, hash, slot); known != 0) return known;

  const std::lock_guard lock(names.lock);
  if (const uint16_t known = find(names, name, hash, slot); known != 0) return known;
  if (names.last + 1 == kCapacity) return 0;
  const KRString kept(name);
  const auto number = static_cast<uint16_t>(++names.last);
  names.entries[number].store(new Entry{krMake<KRLabel>(kept), kept, hash}, std::memory_order_release);
  names.slots[slot].store(number, std::memory_order_release);
  return number;
}

KRText KRLabelTable::name(uint16_t number) noexcept {
  if (number == 0 || number >= kCapacity) return {};
  const Entry* entry = table().entries[number].load(std::memory_order_acquire);
  return entry == nullptr ? KRText() : entry->name.text();
}

KRRef<KRLabel> KRLabelTable::label(uint16_t number) {
  if (number == 0 || number >= kCapacity) return {};
  const Entry* entry = table().entries[number].load(std::memory_order_acquire);
  return entry == nullptr ? KRRef<KRLabel>() : entry->label;
}
