#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "contacts/stores/KRBookStore.h"
#include "contacts/vcard/KRVCardFile.h"

/// The changes of a save that are about one file of cards, and the making of that file's new content.
class KRVCardEdition {
 public:
  /// `contact` counts the contacts of the file from 0. In rising order.
  void change(size_t contact, KRStoreChanges::Changed& change) { changed_.emplace_back(contact, &change); }
  void remove(size_t contact, KRStoreChanges::Removed& removal) { removed_.emplace_back(contact, &removal); }
  void add(KRStoreChanges::Added& addition) { added_.push_back(&addition); }

  bool isRemovalOnly() const noexcept { return changed_.empty() && added_.empty(); }

  /// The file with the changes made, and the new records given to them. `stored` has the persons that are changed,
  /// `UIDs` what `KRVCardFile::Changes` says. The errors of `KRVCardFile::with`; `Changed` when the file has not so
  /// many contacts.
  KRResult<KRVCardFile> of(const KRVCardFile& file, const std::vector<KRStoredPerson>& stored,
                           const std::unordered_map<const IKRPerson*, KRString>& UIDs = {});
  void markDone();

  const std::vector<std::pair<size_t, KRStoreChanges::Changed*>>& changed() const noexcept { return changed_; }
  const std::vector<std::pair<size_t, KRStoreChanges::Removed*>>& removed() const noexcept { return removed_; }

 private:
  std::vector<std::pair<size_t, KRStoreChanges::Changed*>> changed_;
  std::vector<std::pair<size_t, KRStoreChanges::Removed*>> removed_;
  std::vector<KRStoreChanges::Added*> added_;
};

/// The places of the contacts among a file's cards.
std::vector<size_t> krContactPlaces(const KRVCardFile& file);

/// Appends the contacts of a file, all with that key.
void krAppendContacts(const KRVCardFile& file, KRStoreKey key, std::vector<KRStoredPerson>& persons);

/// What tells a file's content from another one, in this process.
uint64_t krContentMark(std::string_view bytes) noexcept;

/// Whether a file holds something, and none of it a card: it is none of ours to write to.
bool krIsNoCardFile(const KRVCardFile& file) noexcept;
