#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/model/IKRPerson.h"

/// The names by which persons are sorted, each worked out once: a person's `nameChineesPinyin`, else its `displayName`,
/// else "", without its case. All names stand in one piece of memory, and their first bytes beside each other as
/// numbers, so that most comparisons need not look at the text.
class KRSortNames {
 public:
  /// Whether the person's name is read from its record; what classes derived from that of records display is their own
  /// affair.
  static bool isRecord(const IKRPerson& person) noexcept;

  void reserve(size_t count);
  /// Adds the next person; places are counted from 0 in the order of adding.
  void add(const IKRPerson& person);
  /// The places in the order of their names; equal names keep their order. Empty when they stand in order already.
  std::vector<uint32_t> order();

 private:
  struct Key {
    uint64_t first;
    uint64_t second;
    uint32_t place;
    uint32_t size;
  };
  static constexpr size_t kInKey = 2 * sizeof(uint64_t);

  void appendName(const IKRPerson& person);
  /// Puts the keys into the order of their names.
  void sort(std::span<Key> keys) const;
  /// The same for many: all are laid into drawers by their first bytes, so that only names that begin alike are
  /// compared.
  void sortByDrawers();
  /// `isBefore`, to be handed on.
  auto before() const noexcept;
  bool isBefore(const Key& a, const Key& b) const noexcept;
  std::string_view rest(const Key& key) const noexcept;

  KRHold hold_;
  /// The displayed name of the person being added.
  std::string shown_;
  std::string names_;
  /// Where each name begins.
  std::vector<size_t> starts_;
  std::vector<Key> keys_;
};
