#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "contacts/model/IKRPerson.h"
#include "detectors/KRPersonAhead.h"
#include "platform/KRHashIndex.h"
#include "platform/KRPrefetch.h"
#include "platform/KRProgress.h"

/// Places of persons gathered by key, in the order in which they came. Keys are told apart by the caller, who gives
/// their hashes and compares: a hash alone never makes a group. A key that one place alone has costs eight bytes and
/// its slots in the index.
class KRPersonGroups {
 public:
  static constexpr uint32_t kNone = KRHashIndex::kNone;

  /// The number of the key of that hash for which `isSame(number)` holds, or `kNone`.
  template <class IsSame>
  uint32_t find(uint64_t hash, IsSame isSame) const {
    return index_.find(hash, isSame);
  }

  /// Begins a new key with its first place. Keys are numbered from 0 in the order of first appearance.
  void start(uint64_t hash, uint32_t place) {
    index_.add(hash, static_cast<uint32_t>(keys_.size()));
    keys_.push_back({place, kNone});
  }

  /// Adds a place to a key that is there.
  void join(uint32_t key, uint32_t place) {
    if (!isGroup(key)) {
      const uint32_t first = link(keys_[key].first);
      keys_[key].group = static_cast<uint32_t>(groups_.size());
      groups_.push_back({first, first});
      groupKeys_.push_back(key);
    }
    const uint32_t added = link(place);
    Group& group = groups_[keys_[key].group];
    links_[group.last].next = added;
    group.last = added;
  }

  /// Adds a place to the key that is the same, or begins a new one.
  template <class IsSame>
  void add(uint64_t hash, uint32_t place, IsSame isSame) {
    const uint32_t known = find(hash, isSame);
    if (known == kNone) {
      start(hash, place);
    } else {
      join(known, place);
    }
  }

  /// Makes room for so many keys. Room that is not used costs next to nothing.
  void reserve(size_t count) {
    index_.reserve(count);
    keys_.reserve(count);
  }
  // For many keys at once: ask for all, then see which key each is likely to be (`kNone` is sure) and ask for that.
  void prefetch(uint64_t hash) const noexcept { index_.prefetch(hash); }
  uint32_t likely(uint64_t hash) const noexcept { return index_.likely(hash); }
  void prefetchKey(uint32_t key) const noexcept { krPrefetch(keys_.data() + key); }

  size_t keyCount() const noexcept { return keys_.size(); }
  uint32_t firstPlace(uint32_t key) const noexcept { return keys_[key].first; }
  uint32_t lastPlace(uint32_t key) const noexcept {
    return isGroup(key) ? links_[groups_[keys_[key].group].last].place : keys_[key].first;
  }
  /// Whether the key has two places or more.
  bool isGroup(uint32_t key) const noexcept { return keys_[key].group != kNone; }
  /// The keys of groups, in the order in which their second places came.
  const std::vector<uint32_t>& groupKeys() const noexcept { return groupKeys_; }

  /// For a walk over the keys in order: asks for the persons of groups that come soon.
  void prefetchAhead(uint32_t key, const KRPersonList& persons) const {
    constexpr uint32_t kFar = 128;
    constexpr uint32_t kNear = 64;
    if (key + kFar < keyCount() && isGroup(key + kFar))
      krPrefetch(links_.data() + groups_[keys_[key + kFar].group].first);
    if (key + kNear >= keyCount() || !isGroup(key + kNear)) return;
    const Group& group = groups_[keys_[key + kNear].group];
    krPrefetchToWrite(persons.at(links_[group.first].place));
    krPrefetchToWrite(persons.at(links_[group.last].place));
  }

  /// Calls `visit(place)` for all places of a key, in order.
  template <class Visit>
  void forPlaces(uint32_t key, Visit visit) const {
    if (!isGroup(key)) {
      visit(keys_[key].first);
      return;
    }
    for (uint32_t at = groups_[keys_[key].group].first; at != kNone; at = links_[at].next) visit(links_[at].place);
  }

 private:
  struct Key {
    uint32_t first;
    uint32_t group;
  };
  struct Group {
    uint32_t first;
    uint32_t last;
  };
  struct Link {
    uint32_t place;
    uint32_t next;
  };

  uint32_t link(uint32_t place) {
    links_.push_back({place, kNone});
    return static_cast<uint32_t>(links_.size() - 1);
  }

  KRHashIndex index_;
  std::vector<Key> keys_;
  std::vector<Group> groups_;
  std::vector<uint32_t> groupKeys_;
  std::vector<Link> links_;
};

/// Gathers persons by text keys, some dozens at a time: a search for one key waits several times for memory, and those
/// of a block wait together. `WriteKey` is that of `krGroupPersons`.
template <class WriteKey>
class KRPersonGrouping {
 public:
  KRPersonGrouping(const KRPersonList& persons, WriteKey writeKey)
      : persons_(persons), writeKey_(std::move(writeKey)) {}

  /// Makes room for so many persons.
  void reserve(size_t count) { groups_.reserve(count); }

  /// Takes the person at that place, whose memory has been asked for before.
  void take(uint32_t place) {
    if (!write(place, key_)) return;
    const uint64_t hash = KRText(std::string_view(key_)).hash();
    groups_.prefetch(hash);
    const size_t start = texts_.size();
    texts_ += key_;
    block_[count_++] = {hash, start, texts_.size(), place, KRPersonGroups::kNone};
    if (count_ == block_.size()) addBlock();
  }

  KRPersonGroups finish() {
    addBlock();
    return std::move(groups_);
  }

 private:
  struct Pending {
    uint64_t hash;
    size_t start;
    size_t end;
    uint32_t place;
    uint32_t likely;
  };
  static constexpr size_t kBlock = 64;

  bool write(uint32_t place, std::string& to) {
    hold_.empty();
    to.clear();
    return writeKey_(*persons_.at(place), hold_, to);
  }

  void addBlock() {
    const std::span<Pending> block(block_.data(), count_);
    for (Pending& each : block) {
      each.likely = groups_.likely(each.hash);
      if (each.likely != KRPersonGroups::kNone) groups_.prefetchKey(each.likely);
    }
    forEarlier(block, [](const IKRPerson* person) { krPrefetch(person); });
    forEarlier(block, [](const IKRPerson* person) { person->prefetch(); });
    for (const Pending& each : block) {
      const std::string_view key(texts_.data() + each.start, each.end - each.start);
      groups_.add(each.hash, each.place, [&](uint32_t number) { return isKeyOf(groups_.firstPlace(number), key); });
    }
    texts_.clear();
    count_ = 0;
  }

  /// The persons that those of the block are likely to be compared with.
  template <class Visit>
  void forEarlier(std::span<const Pending> block, Visit visit) const {
    for (const Pending& each : block) {
      if (each.likely == KRPersonGroups::kNone) continue;
      const uint32_t place = groups_.firstPlace(each.likely);
      if (place != earlierPlace_) visit(persons_.at(place));
    }
  }

  bool isKeyOf(uint32_t place, std::string_view key) {
    if (place != earlierPlace_) {
      write(place, earlier_);
      earlierPlace_ = place;
    }
    return earlier_ == key;
  }

  const KRPersonList& persons_;
  WriteKey writeKey_;
  KRHold hold_;
  KRPersonGroups groups_;
  std::string key_;
  /// The keys of the block, one behind the other.
  std::string texts_;
  std::array<Pending, kBlock> block_;
  size_t count_ = 0;
  /// The key compared with last is kept: many persons in a row may have the same one.
  std::string earlier_;
  uint32_t earlierPlace_ = KRPersonGroups::kNone;
};

/// Gathers persons by a text that `writeKey(const IKRPerson&, KRHold&, std::string&)` writes into an empty one for
/// each; a false answer leaves the person out. The progress is reported before each person, from 0. The text is written
/// into memory that is used again and again, and compared with a text written anew: keys are never kept.
template <class WriteKey>
KRPersonGroups krGroupPersons(const KRPersonList& persons, const KRProgress& progress, WriteKey writeKey) {
  KRPersonGrouping<WriteKey> grouping(persons, std::move(writeKey));
  grouping.reserve(persons.count());
  const KRPersonAhead ahead(persons);
  for (uint32_t i = 0; i < persons.count(); ++i) {
    progress(krPercent(i, persons.count()));
    ahead.reach(i);
    grouping.take(i);
  }
  return grouping.finish();
}

/// The persons at the places of a key, in order. `room` is memory to be used again.
inline KRPersonArray krPersonsOf(const KRPersonGroups& groups, uint32_t key, const KRPersonList& persons,
                                 std::vector<IKRPerson*>& room) {
  room.clear();
  groups.forPlaces(key, [&](uint32_t place) { room.push_back(persons.at(place)); });
  return KRPersonArray(std::span<IKRPerson* const>(room));
}
