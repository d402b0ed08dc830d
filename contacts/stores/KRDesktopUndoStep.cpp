#include "contacts/stores/KRDesktopUndoStep.h"

#include <algorithm>
#include <utility>

#include "contacts/stores/KRDesktopJournal.h"
#include "contacts/stores/KRDesktopList.h"
#include "contacts/stores/KRDesktopModule.h"

namespace {

using Cards = KRDesktopJournal::Cards;
using Mark = std::optional<uint64_t>;

class DesktopStep : public KRUndoStep {
 public:
  DesktopStep(const KRUndoRecords::Run& run, int64_t part, KRUndoCards done)
      : run_(run), part_(part), done_(std::move(done)) {}

  KRResult<KRUndo::Target> check(KRUndoStates& states) override {
    const KRResult<Cards> now = look(states);
    if (!now) return now.error();
    return judge(*now, states);
  }

  KRResult<void> putBack() override {
    const KRResult<std::unique_ptr<KRDesktopBook>> book = KRDesktopModule::open(done_.ID);
    if (!book) return named(book.error());
    if ((*book)->isReadOnly()) return named({KRErrorCode::NotAllowed, "this address book can only be read"});
    KRDesktopJournal journal(**book, done_.ID, done_.name, done_.place);
    KRResult<Cards> now = journal.read(UIDsWithout(KRUndoStates()));
    if (!now) return named(now.error());
    KRUndoStates states = statesOf(*now);
    if (const KRResult<KRUndo::Target> same = judge(*now, states); !same) return same.error();
    journal.remember(*now);
    // Removals last: of contacts that were merged there is one at any time.
    for (const auto step : {&DesktopStep::addAgain, &DesktopStep::changeBack, &DesktopStep::removeAdded}) {
      if (KRResult<void> put = (this->*step)(journal, *now); !put) return named(put.error());
    }
    return {};
  }

 private:
  KRError named(KRError error) const {
    error.sentence.append(" (desktop address book \"").append(done_.name.view()).append("\", ");
    error.sentence.append(done_.place.view()).append(")");
    return error;
  }

  std::vector<std::string> UIDsWithout(const KRUndoStates& states) const {
    std::vector<std::string> UIDs;
    for (const KRUndoCards::Card& card : done_.cards) {
      if (states.find(done_.keyOf(card)) == states.end()) UIDs.push_back(card.UID);
    }
    return UIDs;
  }

  KRUndoStates statesOf(const Cards& now) const {
    KRUndoStates states;
    for (const KRUndoCards::Card& card : done_.cards) {
      const auto found = now.find(card.UID);
      states.emplace(done_.keyOf(card), found == now.end() ? Mark() : KRUndoCards::markOf(found->second.text));
    }
    return states;
  }

  /// Reads the cards that no other step has looked at; the sentences need their names.
  KRResult<Cards> look(KRUndoStates& states) const {
    const std::vector<std::string> UIDs = UIDsWithout(states);
    if (UIDs.empty()) return Cards();
    const KRResult<std::unique_ptr<KRDesktopBook>> book = KRDesktopModule::open(done_.ID);
    if (!book) return named(book.error());
    KRResult<Cards> now = KRDesktopJournal(**book, done_.ID, done_.name, done_.place).read(UIDs);
    if (!now) return named(now.error());
    states.merge(statesOf(*now));
    return now;
  }

  KRResult<KRUndo::Target> judge(const Cards& now, KRUndoStates& states) {
    back_.clear();
    for (const KRUndoCards::Card& card : done_.cards) {
      Mark& mark = states[done_.keyOf(card)];
      const Mark before = card.markBefore();
      if (mark == before) continue;
      if (!(mark == card.after)) return changed(card, now);
      mark = before;
      back_.push_back(&card);
    }
    return KRUndo::Target{"desktop"_kr, KRString(done_.called()), done_.cards.size(), !back_.empty()};
  }

  KRError changed(const KRUndoCards::Card& card, const Cards& now) const {
    const auto found = now.find(card.UID);
    const std::string& text = card.before.empty() && found != now.end() ? found->second.text : card.before;
    const std::string name = krReadDesktopList(text).name;
    return named({KRErrorCode::Changed, (name.empty() ? card.UID : name) + " has changed since that run"});
  }

  // Putting back

  enum class Kind { AddAgain, ChangeBack, RemoveAdded };

  std::vector<const KRUndoCards::Card*> cardsTo(Kind kind, const Cards& now) const {
    std::vector<const KRUndoCards::Card*> cards;
    for (const KRUndoCards::Card* card : back_) {
      const Kind its = card->before.empty()      ? Kind::RemoveAdded
                       : now.contains(card->UID) ? Kind::ChangeBack
                                                 : Kind::AddAgain;
      if (its == kind) cards.push_back(card);
    }
    return cards;
  }

  KRResult<void> addAgain(KRDesktopJournal& journal, const Cards& now) {
    const auto cards = cardsTo(Kind::AddAgain, now);
    for (size_t begin = 0; begin < cards.size();) {
      std::vector<std::string> UIDs;
      const KRDesktopBatch batch = krNextDesktopBatch(begin, cards.size(), [&](size_t i) {
        UIDs.push_back(cards[i]->UID);
        return cards[i]->before;
      });
      if (const auto added = journal.add(batch.cards, UIDs); !added) return added.error();
      if (KRResult<void> kept = takeIdentifiers(cards, begin, UIDs); !kept) return kept;
      begin = batch.end;
    }
    return {};
  }

  /// A service that gives every new card an identifier of its own has given others than before. The record names them
  /// from here on, or what is put back would be added once more when a later part of the run fails and is tried again.
  KRResult<void> takeIdentifiers(const std::vector<const KRUndoCards::Card*>& cards, size_t begin,
                                 const std::vector<std::string>& UIDs) {
    bool isOther = false;
    for (size_t i = 0; i < UIDs.size(); ++i) {
      KRUndoCards::Card& card = done_.cards[static_cast<size_t>(cards[begin + i] - done_.cards.data())];
      isOther = isOther || card.UID != UIDs[i];
      card.UID = UIDs[i];
    }
    if (!isOther) return {};
    return KRUndoPart{part_, std::string(KRUndoPart::kCards.view()), done_.fields()}.write(run_);
  }

  KRResult<void> changeBack(KRDesktopJournal& journal, const Cards& now) {
    const auto cards = cardsTo(Kind::ChangeBack, now);
    for (size_t begin = 0; begin < cards.size();) {
      std::vector<std::string> UIDs;
      const KRDesktopBatch batch = krNextDesktopBatch(begin, cards.size(), [&](size_t i) {
        UIDs.push_back(cards[i]->UID);
        return krWithRevisionOf(cards[i]->before, now.at(cards[i]->UID).text);
      });
      if (const auto changed = journal.change(batch.cards, UIDs); !changed) return changed.error();
      begin = batch.end;
    }
    return {};
  }

  KRResult<void> removeAdded(KRDesktopJournal& journal, const Cards& now) {
    const auto cards = cardsTo(Kind::RemoveAdded, now);
    for (size_t begin = 0; begin < cards.size();) {
      const size_t end = std::min(begin + KRDesktopBook::kBatch, cards.size());
      std::vector<std::string> UIDs;
      for (; begin < end; ++begin) UIDs.push_back(cards[begin]->UID);
      if (KRResult<void> removed = journal.remove(UIDs); !removed) return removed;
    }
    return {};
  }

  const KRUndoRecords::Run run_;
  const int64_t part_;
  KRUndoCards done_;
  /// The cards that are as the run left them.
  std::vector<const KRUndoCards::Card*> back_;
};

}  // namespace

std::unique_ptr<KRUndoStep> krDesktopUndoStep(const KRUndoRecords::Run& run, int64_t part, KRUndoCards done) {
  return std::make_unique<DesktopStep>(run, part, std::move(done));
}
