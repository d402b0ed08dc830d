#pragma once

#include <cstdint>

#include "contacts/model/KRMutableMultipleValue.h"
#include "contacts/model/KRProperty.h"
#include "platform/KRHashIndex.h"
#include "platform/KRString.h"

/// When two entries of a multiple value count as the same, for merging. The test is not symmetric in every case: the
/// first value is the one that stands in the merged list already. A missing value counts as the same as nothing, save
/// for accounts, of which service and name are compared each by itself.
struct KREntryRule {
  bool (*isSame)(const KRValue& existing, const KRValue& added);
  /// A hash in step with `isSame`.
  uint64_t (*hash)(const KRValue& value);
};

/// The rule for the entries of a property, by its name.
const KREntryRule& krEntryRule(const KRString& propertyName);

/// The multiple value that a merge makes of several: every distinct entry once, in the order in which they come; of
/// entries that count as the same the first is kept, with its label. Linear in the number of entries.
class KRMergedEntries {
 public:
  explicit KRMergedEntries(const KRString& propertyName) : rule_(krEntryRule(propertyName)) {}

  /// Takes over the entries that are new. The main entry of the first value that has any becomes the main one: the
  /// phone that the first contact prefers stays the preferred one.
  void add(const KRMutableMultipleValue& value);
  /// All entries so far; nothing when there is none.
  KRRef<KRMutableMultipleValue> result() const;

 private:
  /// Place of the entry that counts as the same, which may be the entry itself once it is appended.
  size_t placeOf(KRMutableSingleValue& entry);

  const KREntryRule& rule_;
  KRRef<KRMutableMultipleValue> entries_ = krMake<KRMutableMultipleValue>();
  KRHashIndex places_;
};
