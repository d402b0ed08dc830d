#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "contacts/stores/KRDesktopCard.h"
#include "contacts/stores/KRDesktopService.h"
#include "contacts/stores/KRUndoCards.h"
#include "contacts/undo/KRUndoRecorder.h"

/// Writes to a book of the desktop and, while an undo record is kept, takes down what it does: before each call the
/// whole cards that the call changes or removes, after it what the service made of them. When the record cannot be
/// written, nothing is.
///
/// The service does each call whole or not at all. Of one that failed there is a record only when the service has, or
/// may have, done it nonetheless.
///
/// Not locked; the book must outlive it.
class KRDesktopJournal {
 public:
  /// By their identifiers.
  using Cards = std::unordered_map<std::string, KRDesktopCard>;
  /// What the service made of the cards; an error when that could not be read, though they are written.
  struct Done {
    KRResult<Cards> now;
  };

  /// The book's identifier, name and place as `KRUndoCards` has them.
  KRDesktopJournal(KRDesktopBook& book, KRString ID, KRString name, KRString place);

  /// The cards of these identifiers that there are now.
  KRResult<Cards> read(const std::vector<std::string>& UIDs);
  /// Tells what cards that are about to be changed or removed are now. Kept until `forget`, and only as long as they
  /// are of use.
  void remember(Cards cards);
  void remember(const KRDesktopCard& card);
  void forget() { before_.clear(); }

  /// Adds the cards, each with an identifier of its own in `UIDs`; what the service really calls them stands there
  /// then.
  KRResult<Done> add(const std::vector<std::string>& cards, std::vector<std::string>& UIDs);
  /// Puts cards in the place of those of these identifiers, which must have been remembered.
  KRResult<Done> change(const std::vector<std::string>& cards, const std::vector<std::string>& UIDs);
  /// Removes cards, which must have been remembered.
  KRResult<void> remove(const std::vector<std::string>& UIDs);

 private:
  KRResult<KRUndoNote> note(const std::vector<std::string>& UIDs, const std::vector<std::string>& cards);
  Done settle(const std::vector<std::string>& UIDs, KRUndoNote& note);
  void giveUp(KRUndoNote& note);

  KRDesktopBook& book_;
  KRDesktopCardReader reader_;
  Cards before_;
  /// What the call is to do that is being made.
  KRUndoCards done_;
};

/// Cards that go to the service in one call.
struct KRDesktopBatch {
  std::vector<std::string> cards;
  /// Behind the last of the changes that they are about.
  size_t end;
};

/// The next batch of `count` changes, from `begin` on; `cardAt` makes the card of one.
template <class CardAt>
KRDesktopBatch krNextDesktopBatch(size_t begin, size_t count, const CardAt& cardAt) {
  KRDesktopBatch batch{{}, begin};
  for (size_t bytes = 0;
       batch.end < count && batch.cards.size() < KRDesktopBook::kBatch && bytes < KRDesktopBook::kBatchBytes;
       ++batch.end) {
    batch.cards.push_back(cardAt(batch.end));
    bytes += batch.cards.back().size();
  }
  return batch;
}
