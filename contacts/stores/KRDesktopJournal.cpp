#include "contacts/stores/KRDesktopJournal.h"

#include <algorithm>
#include <utility>

#include "contacts/undo/KRUndoPart.h"

KRDesktopJournal::KRDesktopJournal(KRDesktopBook& book, KRString ID, KRString name, KRString place) : book_(book) {
  done_.ID = std::move(ID);
  done_.name = std::move(name);
  done_.place = std::move(place);
}

KRResult<KRDesktopJournal::Cards> KRDesktopJournal::read(const std::vector<std::string>& UIDs) {
  std::vector<std::string> texts;
  if (KRDesktopFailure failure = book_.read(UIDs, texts)) return *std::move(failure);
  Cards cards;
  for (const std::string& text : texts) {
    KRDesktopCard card = reader_.read(text);
    cards.insert_or_assign(card.UID, std::move(card));
  }
  return cards;
}

void KRDesktopJournal::remember(Cards cards) {
  if (!KRUndoRecorder::isOpen()) return;
  before_.merge(cards);
  // Those that were there already are older.
  for (auto& [UID, card] : cards) before_.insert_or_assign(UID, std::move(card));
}

void KRDesktopJournal::remember(const KRDesktopCard& card) {
  if (KRUndoRecorder::isOpen()) before_.insert_or_assign(card.UID, card);
}

// Writing

KRResult<KRDesktopJournal::Done> KRDesktopJournal::add(const std::vector<std::string>& cards,
                                                       std::vector<std::string>& UIDs) {
  KRResult<KRUndoNote> note = this->note(UIDs, cards);
  if (!note) return note.error();
  std::vector<std::string> given;
  if (KRDesktopFailure failure = book_.add(cards, given)) {
    giveUp(*note);
    return *std::move(failure);
  }
  given.resize(cards.size());
  UIDs = std::move(given);
  return settle(UIDs, *note);
}

KRResult<KRDesktopJournal::Done> KRDesktopJournal::change(const std::vector<std::string>& cards,
                                                          const std::vector<std::string>& UIDs) {
  KRResult<KRUndoNote> note = this->note(UIDs, cards);
  if (!note) return note.error();
  if (KRDesktopFailure failure = book_.change(cards)) {
    giveUp(*note);
    return *std::move(failure);
  }
  return settle(UIDs, *note);
}

KRResult<void> KRDesktopJournal::remove(const std::vector<std::string>& UIDs) {
  KRResult<KRUndoNote> note = this->note(UIDs, {});
  if (!note) return note.error();
  if (KRDesktopFailure failure = book_.remove(UIDs)) {
    giveUp(*note);
    return *std::move(failure);
  }
  note->keep();
  return {};
}

// Taking down

/// No cards for those that are to be removed. Until the service has answered, the marks are those of what is sent.
KRResult<KRUndoNote> KRDesktopJournal::note(const std::vector<std::string>& UIDs,
                                            const std::vector<std::string>& cards) {
  if (!KRUndoRecorder::isOpen()) return KRUndoNote();
  done_.cards.clear();
  for (size_t i = 0; i < UIDs.size(); ++i) {
    KRUndoCards::Card card = {UIDs[i], {}, {}};
    if (const auto before = before_.find(UIDs[i]); before != before_.end()) card.before = before->second.text;
    if (i < cards.size()) card.after = KRUndoCards::markOf(cards[i]);
    done_.cards.push_back(std::move(card));
  }
  return KRUndoRecorder::record(KRUndoPart::kCards, done_.fields(), done_.changes());
}

KRDesktopJournal::Done KRDesktopJournal::settle(const std::vector<std::string>& UIDs, KRUndoNote& note) {
  Done done = {read(UIDs)};
  if (!KRUndoRecorder::isOpen()) return done;
  for (size_t i = 0; i < done_.cards.size(); ++i) {
    KRUndoCards::Card& card = done_.cards[i];
    card.UID = UIDs[i];
    if (!done.now) continue;
    const auto now = done.now->find(card.UID);
    if (now != done.now->end()) card.after = KRUndoCards::markOf(now->second.text);
  }
  note.keep(KRUndoPart::kCards, done_.fields(), done_.changes());
  return done;
}

void KRDesktopJournal::giveUp(KRUndoNote& note) {
  if (!KRUndoRecorder::isOpen()) return;
  std::vector<std::string> UIDs;
  for (const KRUndoCards::Card& card : done_.cards) UIDs.push_back(card.UID);
  const KRResult<Cards> now = read(UIDs);
  const bool isAsBefore =
      now && std::all_of(done_.cards.begin(), done_.cards.end(), [&](const KRUndoCards::Card& card) {
        const auto found = now->find(card.UID);
        if (found == now->end()) return card.before.empty();
        return !card.before.empty() && KRUndoCards::markOf(found->second.text) == card.markBefore();
      });
  if (!isAsBefore) note.keep();
}
