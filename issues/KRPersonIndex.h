#pragma once

#include <cstdint>
#include <deque>
#include <unordered_map>
#include <vector>

#include "issues/KRIssueObject.h"
#include "platform/KRHashIndex.h"
#include "platform/KRList.h"
#include "platform/KRString.h"

/// The findings of each person: a table from person address key to a live list.
///
/// Keys that are the text of a 64-bit number, as all keys of persons are, are kept as that number; whatever else a host
/// makes up is kept as text. Most persons have a finding or two, and no list until somebody asks for it: about forty
/// bytes a person and sixteen for each finding but the first, with a list about a hundred and fifty. A list stays where
/// it is, and that of its key, as long as the index lives; a key without findings counts as absent.
class KRPersonIndex {
 public:
  /// The index refers to its findings from inside the graph of `owner`, which it is a part of.
  explicit KRPersonIndex(const KRGraphNode& owner) : owner_(owner) {}
  ~KRPersonIndex();
  KRPersonIndex(const KRPersonIndex&) = delete;
  KRPersonIndex& operator=(const KRPersonIndex&) = delete;

  /// The list under the key, or nothing when it has no findings.
  KRList<KRIssueObject>* find(const IKRPerson* person);
  KRList<KRIssueObject>* find(KRText key);
  /// The findings under the key, for who does not need the live list and so spares making it.
  std::vector<KRRef<KRIssueObject>> copy(const IKRPerson* person);

  /// Appends the finding to the key's findings unless it is among them. A key of nothing is passed over.
  void add(KRIssueObject* object, const IKRPerson* person);
  void add(KRIssueObject* object, KRText key);
  /// Adds every finding of the list under each of its persons, in order.
  void addAll(const KRList<KRIssueObject>& objects);

  /// Removes the finding from the key's findings, if it is among them. The finding may die of it.
  void remove(const KRIssueObject* object, const IKRPerson* person);
  void remove(const KRIssueObject* object, KRText key);

  /// Ask the processor for the places of the finding's persons, some steps later for their entries, then for the links
  /// of those that have several findings, and then, for who deletes persons, for all these findings.
  void prefetchPlaces(const KRIssueObject& object) const noexcept;
  void prefetchEntries(const KRIssueObject& object) const noexcept;
  void prefetchLinks(const KRIssueObject& object) const noexcept;
  void prefetchFindings(const KRIssueObject& object) const noexcept;

 private:
  using List = KRList<KRIssueObject>;
  static constexpr uint32_t kNone = 0xFFFFFFFFU;
  /// Either the list is there, or the findings are chained; nothing of both when all were removed before anybody asked
  /// for the list.
  struct Entry {
    int64_t key;
    KRIssueObject* first = nullptr;
    /// The link of the second finding.
    uint32_t further = kNone;
    uint32_t list = kNone;
  };
  struct Link {
    KRIssueObject* object;
    uint32_t next = kNone;
  };
  /// A finding that is about to be added under a key.
  struct Pending {
    KRIssueObject* object;
    int64_t key;
    uint64_t hash;
    uint32_t likely;
  };
  static constexpr size_t kBlock = 64;
  /// A person with more findings gets a list at once, in which one is found in one step.
  static constexpr size_t kLongest = 8;

  const Entry* likelyEntry(const IKRPerson* person) const noexcept;
  Entry* entryOf(int64_t key, uint64_t hash);
  List* listOf(Entry& entry);
  List* findNumber(int64_t key);
  void addNumber(KRIssueObject* object, int64_t key, uint64_t hash);
  void addLink(Entry& entry, KRIssueObject* object);
  void addBlock(std::vector<Pending>& block);
  void beginReferences();
  void removeNumber(const KRIssueObject* object, int64_t key);
  void removeLink(Entry& entry, const KRIssueObject* object);

  const KRGraphNode& owner_;
  std::vector<Entry> entries_;
  std::vector<Link> links_;
  KRHashIndex places_;
  /// Findings that entries and links refer to already, and whose references have not begun.
  std::vector<const KRGraphNode*> referred_;
  std::deque<List> lists_;
  std::unordered_map<KRString, List, KRTextHash, KRTextEqual> texts_;
};
