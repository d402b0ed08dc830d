#pragma once

#include <cstdint>
#include <deque>
#include <unordered_map>
#include <vector>

#include "issues/KRIssueObject.h"
#include "platform/KRList.h"
#include "platform/KRString.h"

/// The findings of each person: a table from person address key to a live list.
///
/// Keys that are the text of a 64-bit number, as all keys of persons are, are kept as that number; whatever else a host
/// makes up is kept as text. A person with findings costs about a hundred bytes. A key without findings counts as
/// absent, but keeps its place for findings to come, so lists stay where they are as long as the index lives.
class KRPersonIndex {
 public:
  /// The lists refer to their findings from inside the graph of `owner`, which the index is a part of.
  explicit KRPersonIndex(const KRGraphNode& owner) : owner_(owner) {}

  /// The list under the key, or nothing when it has no findings.
  KRList<KRIssueObject>* find(const IKRPerson* person);
  KRList<KRIssueObject>* find(KRText key);

  /// Appends the finding to the key's list unless it is in it. A key of nothing is passed over.
  void add(KRIssueObject* object, const IKRPerson* person);
  void add(KRIssueObject* object, KRText key);

 private:
  struct Entry {
    Entry(const KRGraphNode& owner, int64_t key) : key(key), objects(owner) {}
    int64_t key;
    KRList<KRIssueObject> objects;
  };
  using Cell = uint32_t;
  static constexpr Cell kFree = 0xFFFFFFFFU;

  size_t cellOf(int64_t key) const noexcept;
  void grow();
  KRList<KRIssueObject>* findNumber(int64_t key) noexcept;
  KRList<KRIssueObject>& listOfNumber(int64_t key);

  const KRGraphNode& owner_;
  // Open addressing over the numbers of entries; nothing is ever taken out.
  std::vector<Cell> cells_;
  std::deque<Entry> entries_;
  std::unordered_map<KRString, KRList<KRIssueObject>, KRTextHash, KRTextEqual> texts_;
};
