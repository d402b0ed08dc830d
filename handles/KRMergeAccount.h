#pragma once

#include <vector>

#include "contacts/model/IKRPerson.h"
#include "contacts/model/KRGroup.h"
#include "contacts/model/KRLabel.h"
#include "contacts/model/KRProperty.h"
#include "platform/KRValue.h"

/// What a merge made of one value of one of its persons.
struct KRMergedValue {
  enum class Fate : uint8_t {
    /// It stands in the merged person.
    Kept,
    /// The merged person has another value that counts as the same, of an earlier person or entry.
    Equal,
    /// The merged person does not have it: it is in the trash with its person, and nowhere else.
    Left,
  };

  /// The place of the person among those merged, from 0.
  size_t person = 0;
  /// Nothing for a line of the person's card that no property shows, and for a group.
  const KRProperty* property = nullptr;
  /// Set for a membership only.
  KRRef<KRGroup> group;
  /// The label of an entry, or nothing.
  KRRef<KRLabel> label;
  /// The value; of a line of a card its text, such as "x-skill:chess" (the name in lower case), of a group its name.
  KRValue value;
  Fate fate = Fate::Left;
  /// Of an entry that equals one with another label: that label.
  KRRef<KRLabel> keptLabel;
};

/// An account of a merge: every value of every person (entries of multiple values, tags, lines of cards that no
/// property shows, and groups, each by itself), in the order of the persons and of the standard properties. `merged` is
/// what `KRIssueHandle::indirectFix` made of these persons, in this order; it is looked at as it is, not worked out
/// anew. Linear in the number of values. One thread.
///
/// Not told of are what belongs to a card and not to a person: its identifier, version and formatted name.
std::vector<KRMergedValue> krMergeAccount(const KRPersonArray& persons, const IKRPerson& merged);
