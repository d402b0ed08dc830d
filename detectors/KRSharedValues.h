#pragma once

#include <cstdint>
#include <vector>

#include "contacts/model/IKRPerson.h"
#include "detectors/KRPersonGroups.h"
#include "issues/KRIssueObject.h"
#include "platform/KRProgress.h"

/// The values of one property over a list of contacts, each with the contacts that hold it. A value's key is its text
/// and, behind it, a mark for organisations, which therefore share nothing with persons. Keys are compared as such
/// texts, but never built.
///
/// Values are views of the contacts: these must live and stay as they are.
class KRSharedValues {
 public:
  /// `property` is that of phones or e-mail addresses.
  explicit KRSharedValues(KROrdinal property) : property_(property) {}

  /// Reads all contacts in order and reports from 0 to 70 per cent, after each.
  void collect(const KRPersonList& persons, const KRProgress& progress);

  /// Keys are numbered from 0 in the order in which they were first met.
  size_t keyCount() const noexcept { return groups_.keyCount(); }
  /// The key's value, without any mark for organisations.
  KRString value(uint32_t key) const;
  /// Whether the key is marked as that of organisations.
  bool isMarked(uint32_t key) const noexcept { return keys_[key].isMarked; }
  /// The contacts that hold the key's value, each once, in order: all of them, respectively none when fewer than two
  /// do.
  KRPersonArray all(uint32_t key, const KRPersonList& persons);
  /// False when `holders` answers none for sure; for a walk over the keys in order, which asks for persons that come
  /// soon.
  bool mayBeShared(uint32_t key, const KRPersonList& persons) const {
    groups_.prefetchAhead(key, persons);
    return groups_.isGroup(key);
  }
  KRPersonArray holders(uint32_t key, const KRPersonList& persons);

  /// The key as text (written form: `KeyString:person:`). Nothing for nothing.
  static KRString keyString(const KRString& value, const IKRPerson* person);

 private:
  struct Key {
    const char* data;
    uint32_t size;
    bool isMarked;
    KRText text() const noexcept { return {data, size}; }
  };

  /// A value that was read and not looked for yet.
  struct Pending {
    uint64_t hash;
    Key key;
    uint32_t place;
    uint32_t likely;
  };
  static constexpr size_t kBlock = 64;

  void read(KRText value, bool isOrganization, uint32_t place);
  static void hash(Pending& value);
  void addBlock();
  void add(const Pending& value);

  KROrdinal property_;
  KRHold hold_;
  /// Values are looked for some dozens at a time: each search waits several times for memory, and those of a block wait
  /// together.
  std::vector<Pending> block_;
  std::vector<Key> keys_;
  KRPersonGroups groups_;
  std::vector<IKRPerson*> room_;
};

/// A new finding about a value that several contacts hold. `format` is the sentence, with "%@" for the value.
KRRef<KRIssueObject> krFindingAboutValue(const KRPersonArray& persons, const KRString& value, KRText format);
