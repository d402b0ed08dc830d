#pragma once

#include <vector>

#include "contacts/stores/KRBookStore.h"
#include "contacts/vcard/KRVCardFile.h"
#include "contacts/vcard/KRVCardGroup.h"

/// What the cards of groups in a file say, in their order. One without an identifier gets one that is made from its
/// card's text.
std::vector<KRVCardGroup> krGroupsOf(const KRVCardFile& file);

/// The groups that stand as cards among the contacts of files, in both ways in which programs write them.
class KRVCardGroups {
 public:
  /// Takes the cards of groups of a file.
  void read(const KRVCardFile& file);
  /// The groups in the order of their cards, with those of the persons whose identifiers they name. Of two groups with
  /// the same identifier the first counts, and gets the members of both; so does the first of two persons.
  std::vector<KRStoredGroup> withMembers(const std::vector<KRStoredPerson>& persons) const;

 private:
  std::vector<KRVCardGroup> groups_;
};
