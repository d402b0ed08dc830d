#pragma once

#include <cstdint>
#include <deque>
#include <unordered_map>

#include "issues/KRIssueObject.h"
#include "issues/KRPlaceTable.h"
#include "platform/KRList.h"
#include "platform/KRString.h"

/// The findings of each person: a table from person address key to a live list.
///
/// Keys that are the text of a 64-bit number, as all keys of persons are, are kept as that number; whatever else a host
/// makes up is kept as text. Most persons have one finding, and no list until somebody asks for it: about forty bytes a
/// person, with a list about a hundred and fifty. A list stays where it is, and that of its key, as long as the index
/// lives; a key without findings counts as absent.
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

  /// Appends the finding to the key's findings unless it is among them. A key of nothing is passed over.
  void add(KRIssueObject* object, const IKRPerson* person);
  void add(KRIssueObject* object, KRText key);

  /// Removes the finding from the key's findings, if it is among them. The finding may die of it.
  void remove(const KRIssueObject* object, const IKRPerson* person);
  void remove(const KRIssueObject* object, KRText key);

 private:
  using List = KRList<KRIssueObject>;
  /// At most one of both is there; neither when all findings were removed before anybody asked for the list.
  struct Entry {
    int64_t key;
    KRIssueObject* only = nullptr;
    List* list = nullptr;
  };

  Entry* entryOf(int64_t key);
  List* listOf(Entry& entry);
  List* findNumber(int64_t key);
  void addNumber(KRIssueObject* object, int64_t key);
  void removeNumber(const KRIssueObject* object, int64_t key);

  const KRGraphNode& owner_;
  std::deque<Entry> entries_;
  KRPlaceTable places_;
  std::deque<List> lists_;
  std::unordered_map<KRString, List, KRTextHash, KRTextEqual> texts_;
};
