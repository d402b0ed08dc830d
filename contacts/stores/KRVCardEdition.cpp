#include "contacts/stores/KRVCardEdition.h"

#include "contacts/undo/KRUndoMark.h"

using Kind = KRVCardPlace::Kind;

std::vector<size_t> krContactPlaces(const KRVCardFile& file) {
  std::vector<size_t> places;
  places.reserve(file.contactCount());
  for (size_t i = 0; i < file.cards().size(); ++i) {
    if (file.cards()[i].kind == Kind::Contact) places.push_back(i);
  }
  return places;
}

void krAppendContacts(const KRVCardFile& file, KRStoreKey key, std::vector<KRStoredPerson>& persons) {
  for (const KRVCardFile::Card& card : file.cards()) {
    if (card.kind == Kind::Contact) persons.push_back({card.person, key});
  }
}

uint64_t krContentMark(std::string_view bytes) noexcept {
  return krUndoMark(bytes);
}

bool krIsNoCardFile(const KRVCardFile& file) noexcept {
  // White space and byte-order marks alone are an empty file.
  constexpr std::string_view kBlank(" \t\r\n\0\xEF\xBB\xBF\xFE\xFF", 10);
  return file.cards().empty() && file.bytes().find_first_not_of(kBlank) != std::string_view::npos;
}

KRResult<KRVCardFile> KRVCardEdition::of(const KRVCardFile& file, const std::vector<KRStoredPerson>& stored,
                                         const std::unordered_map<const IKRPerson*, KRString>& UIDs) {
  const std::vector<size_t> places = krContactPlaces(file);
  KRVCardFile::Changes wanted;
  wanted.UIDs = UIDs;
  for (const auto& [contact, change] : changed_) {
    if (contact >= places.size()) return KRError{KRErrorCode::Changed, "a contact is not there any more"};
    wanted.changed.emplace_back(places[contact], stored[change->index].person.get());
  }
  for (const auto& [contact, removal] : removed_) {
    if (contact >= places.size()) return KRError{KRErrorCode::Changed, "a contact is not there any more"};
    wanted.removed.push_back(places[contact]);
  }
  for (const KRStoreChanges::Added* addition : added_) wanted.added.push_back(addition->person.get());

  KRResult<KRVCardFile> written = file.with(wanted);
  if (!written) return written;
  const std::vector<size_t> after = krContactPlaces(*written);
  if (after.size() != places.size() - removed_.size() + added_.size())
    return KRError{KRErrorCode::Damaged, "the changed file would not be read back as meant"};
  const auto recordAt = [&](size_t contact) { return written->cards()[after[contact]].person->record(); };
  size_t gone = 0;
  for (const auto& [contact, change] : changed_) {
    while (gone < removed_.size() && removed_[gone].first < contact) ++gone;
    change->record = recordAt(contact - gone);
  }
  for (size_t i = 0; i < added_.size(); ++i) added_[i]->record = recordAt(places.size() - removed_.size() + i);
  return written;
}

void KRVCardEdition::markDone() {
  for (const auto& each : changed_) each.second->isDone = true;
  for (const auto& each : removed_) each.second->isDone = true;
  for (KRStoreChanges::Added* each : added_) each->isDone = true;
}
