#include "contacts/stores/KRDesktopBookStore.h"

#include <algorithm>
#include <utility>

#include "contacts/model/KRObjectEmail.h"
#include "contacts/model/KRPersonIDs.h"
#include "contacts/stores/KRDesktopList.h"
#include "contacts/stores/KRStoreConflicts.h"
#include "contacts/vcard/KRVCardReader.h"

namespace {

KRDesktopMember memberFor(const ABPerson& person, const std::string& UID) {
  const KRRef<KRObjectEmail> email = person.mainEmail();
  return {UID, std::string(person.showName().view()), email ? std::string(email->email().view()) : std::string()};
}

}  // namespace

KRDesktopBookStore::KRDesktopBookStore(KRString ID, KRString name, KRString place, std::unique_ptr<KRDesktopBook> book)
    : ID_(std::move(ID)),
      name_(std::move(name)),
      place_(std::move(place)),
      book_(std::move(book)),
      journal_(*book_, ID_, name_, place_) {}

KRString KRDesktopBookStore::kind() const {
  return "desktop"_kr;
}

KRError KRDesktopBookStore::named(KRError error) const {
  error.sentence.append(" (desktop address book \"")
      .append(name_.view())
      .append("\", ")
      .append(place_.view())
      .append(")");
  return error;
}

KRError KRDesktopBookStore::changedOutside(const KRGroup& list) const {
  return named({KRErrorCode::Changed,
                "the list " + std::string(list.name().view()) + " was changed by another program since reading"});
}

const std::string& KRDesktopBookStore::UIDOf(const KRStoredPerson& person) const {
  return UIDs_[static_cast<size_t>(person.key.place)];
}

KRStoreKey KRDesktopBookStore::newKey(const std::string& UID, int64_t stamp) {
  taken_.insert(UID);
  UIDs_.push_back(UID);
  return {static_cast<int64_t>(UIDs_.size() - 1), stamp};
}

// Reading

KRResult<size_t> KRDesktopBookStore::count() {
  size_t count = 0;
  if (KRDesktopFailure failure = book_->count(count)) return named(*std::move(failure));
  return count;
}

KRResult<KRStoreContent> KRDesktopBookStore::read() {
  std::vector<std::string> texts;
  if (KRDesktopFailure failure = book_->readAll(texts)) return named(*std::move(failure));
  std::vector<KRDesktopCard> cards;
  cards.reserve(texts.size());
  for (std::string& text : texts) {
    cards.push_back(reader_.read(text));
    std::string().swap(text);
  }
  std::sort(cards.begin(), cards.end(), [](const auto& a, const auto& b) { return a.UID < b.UID; });

  UIDs_.clear();
  taken_.clear();
  lists_.clear();
  KRStoreContent content;
  std::unordered_map<std::string, KRRef<ABPerson>> persons;
  for (KRDesktopCard& card : cards) {
    taken_.insert(card.UID);
    if (card.isList) {
      const KRString name(krReadDesktopList(card.text).name);
      lists_.push_back({krMake<KRGroup>(KRString(card.UID), name), std::move(card)});
    } else if (KRRef<ABPerson> person = KRVCardReader::readOne(card.text)) {
      persons.emplace(card.UID, person);
      content.persons.push_back({std::move(person), newKey(card.UID, card.stamp)});
      std::string().swap(card.text);
    }
  }
  for (const List& list : lists_) {
    KRStoredGroup group{list.group, {}};
    for (const std::string& UID : krReadDesktopList(list.card.text).members) {
      if (const auto member = persons.find(UID); member != persons.end()) group.members.push_back(member->second);
    }
    content.groups.push_back(std::move(group));
  }
  return content;
}

KRResult<KRDesktopBookStore::Cards> KRDesktopBookStore::fetch(const std::vector<std::string>& UIDs) {
  KRResult<Cards> cards = journal_.read(UIDs);
  if (!cards) return named(cards.error());
  return cards;
}

/// The identifier, or another one where a list has it already, or a card that is no contact.
std::string KRDesktopBookStore::freeUID(const KRString& wanted, std::unordered_set<std::string>& given) const {
  std::string UID(wanted.view());
  while (UID.empty() || taken_.contains(UID) || !given.insert(UID).second) UID = KRPersonIDs::newIdentifier().view();
  return UID;
}

// Writing

KRResult<void> KRDesktopBookStore::write(KRStoreChanges& changes) {
  if (book_->isReadOnly()) return named({KRErrorCode::NotAllowed, "this address book can only be read"});
  KRResult<void> done = writeInTurn(changes);
  journal_.forget();
  return done;
}

KRResult<void> KRDesktopBookStore::writeInTurn(KRStoreChanges& changes) {
  using Step = KRResult<void> (KRDesktopBookStore::*)(KRStoreChanges&);
  // Removals come last: what a merge takes away is written elsewhere by then.
  for (const Step step :
       {&KRDesktopBookStore::check, &KRDesktopBookStore::addPersons, &KRDesktopBookStore::changePersons}) {
    if (KRResult<void> done = (this->*step)(changes); !done) return done;
  }
  if (changes.groups != nullptr) {
    if (KRResult<void> done = writeLists(changes); !done) return done;
  }
  return removePersons(changes);
}

KRResult<void> KRDesktopBookStore::check(KRStoreChanges& changes) {
  std::vector<std::string> UIDs;
  for (const auto& each : changes.changed) UIDs.push_back(UIDOf(changes.stored[each.index]));
  for (const auto& each : changes.removed) UIDs.push_back(UIDOf(changes.stored[each.index]));
  KRResult<Cards> now = fetch(UIDs);
  if (!now) return now.error();
  const auto isSame = [&](const KRStoredPerson& person) {
    const auto card = now->find(UIDOf(person));
    return card != now->end() && card->second.stamp == person.key.stamp;
  };
  KRStoreConflicts conflicts;
  for (const auto& each : changes.changed) {
    const KRStoredPerson& person = changes.stored[each.index];
    if (!isSame(person)) conflicts.add(*person.person);
  }
  for (auto& each : changes.removed) {
    const KRStoredPerson& person = changes.stored[each.index];
    each.isDone = !now->contains(UIDOf(person));
    if (!each.isDone && !isSame(person)) conflicts.add(*person.person);
  }
  if (!conflicts.isEmpty()) return named({KRErrorCode::Changed, conflicts.sentence()});
  journal_.remember(*std::move(now));
  return changes.groups != nullptr ? checkLists() : KRResult<void>();
}

KRResult<void> KRDesktopBookStore::checkLists() {
  std::vector<std::string> UIDs;
  for (const List& list : lists_) UIDs.push_back(list.card.UID);
  const KRResult<Cards> now = fetch(UIDs);
  if (!now) return now.error();
  for (const List& list : lists_) {
    const auto card = now->find(list.card.UID);
    if (card == now->end() || card->second.stamp != list.card.stamp) return changedOutside(*list.group);
  }
  return {};
}

std::vector<KRDesktopBookStore::Card> KRDesktopBookStore::settled(const std::vector<std::string>& UIDs,
                                                                  const std::vector<std::string>& sent,
                                                                  const KRResult<Cards>& now) {
  std::vector<Card> cards;
  for (size_t i = 0; i < UIDs.size(); ++i) {
    const auto found = now ? now->find(UIDs[i]) : Cards::const_iterator();
    const bool isFound = now && found != now->end();
    // Without the service's own form of the card the next change of it counts as a conflict, and reading anew helps.
    const KRRef<ABPerson> person = KRVCardReader::readOne(isFound ? found->second.text : sent[i]);
    cards.push_back({person ? person->record() : KRCardRecord(), newKey(UIDs[i], isFound ? found->second.stamp : 0)});
  }
  return cards;
}

KRResult<void> KRDesktopBookStore::addPersons(KRStoreChanges& changes) {
  for (size_t begin = 0; begin < changes.added.size();) {
    std::unordered_set<std::string> given;
    std::vector<std::string> UIDs;
    const KRDesktopBatch batch = krNextDesktopBatch(begin, changes.added.size(), [&](size_t i) {
      const ABPerson& person = *changes.added[i].person;
      UIDs.push_back(freeUID(person.ID(), given));
      return krCardForDesktop(person, std::string_view(UIDs.back()));
    });
    const KRResult<KRDesktopJournal::Done> done = journal_.add(batch.cards, UIDs);
    if (!done) return named(done.error());
    std::vector<Card> now = settled(UIDs, batch.cards, done->now);
    for (Card& card : now) {
      KRStoreChanges::Added& each = changes.added[begin++];
      each.record = std::move(card.record);
      each.key = card.key;
      each.isDone = true;
    }
  }
  return {};
}

KRResult<void> KRDesktopBookStore::changePersons(KRStoreChanges& changes) {
  for (size_t begin = 0; begin < changes.changed.size();) {
    std::vector<std::string> UIDs;
    const KRDesktopBatch batch = krNextDesktopBatch(begin, changes.changed.size(), [&](size_t i) {
      const KRStoredPerson& person = changes.stored[changes.changed[i].index];
      UIDs.push_back(UIDOf(person));
      return krCardForDesktop(*person.person, std::string_view(UIDs.back()));
    });
    const KRResult<KRDesktopJournal::Done> done = journal_.change(batch.cards, UIDs);
    if (!done) return named(done.error());
    std::vector<Card> now = settled(UIDs, batch.cards, done->now);
    for (Card& card : now) {
      KRStoreChanges::Changed& each = changes.changed[begin++];
      each.record = std::move(card.record);
      each.key = card.key;
      each.isDone = true;
    }
  }
  return {};
}

KRResult<void> KRDesktopBookStore::removePersons(KRStoreChanges& changes) {
  std::vector<KRStoreChanges::Removed*> open;
  for (auto& each : changes.removed) {
    if (!each.isDone) open.push_back(&each);
  }
  for (size_t begin = 0; begin < open.size();) {
    const size_t end = std::min(begin + KRDesktopBook::kBatch, open.size());
    std::vector<std::string> UIDs;
    for (size_t i = begin; i < end; ++i) UIDs.push_back(UIDOf(changes.stored[open[i]->index]));
    if (KRResult<void> done = journal_.remove(UIDs); !done) return named(done.error());
    for (; begin < end; ++begin) open[begin]->isDone = true;
    for (const std::string& UID : UIDs) taken_.erase(UID);
  }
  return {};
}

// Contact lists

KRResult<void> KRDesktopBookStore::writeLists(const KRStoreChanges& changes) {
  std::unordered_map<const ABPerson*, std::string> UIDs;
  std::unordered_set<std::string> ours;
  for (const KRStoredPerson& each : changes.stored) UIDs.emplace(each.person.get(), UIDOf(each));
  for (const auto& each : changes.added) {
    if (each.isDone) UIDs.emplace(each.person.get(), UIDs_[static_cast<size_t>(each.key.place)]);
  }
  for (const auto& each : UIDs) ours.insert(each.second);
  for (const KRStoredGroup& group : *changes.groups) {
    std::vector<KRDesktopMember> members;
    for (const KRRef<ABPerson>& person : group.members) {
      if (const auto UID = UIDs.find(person.get()); UID != UIDs.end())
        members.push_back(memberFor(*person, UID->second));
    }
    if (KRResult<void> done = writeList(group, members, ours); !done) return done;
  }
  return removeLists(*changes.groups);
}

KRResult<void> KRDesktopBookStore::writeList(const KRStoredGroup& group, const std::vector<KRDesktopMember>& members,
                                             const std::unordered_set<std::string>& ours) {
  const auto place =
      std::find_if(lists_.begin(), lists_.end(), [&](const List& each) { return each.group == group.group; });
  std::vector<std::string> UIDs;
  KRResult<KRDesktopJournal::Done> done = KRDesktopJournal::Done{Cards()};
  if (place == lists_.end()) {
    std::unordered_set<std::string> given;
    UIDs = {freeUID(group.group->uniqueId(), given)};
    done = journal_.add({krNewDesktopList(UIDs.front(), group.group->name().view(), members)}, UIDs);
  } else {
    const std::string card =
        krChangedDesktopList(place->card.text, members, [&](const std::string& UID) { return ours.contains(UID); });
    if (card == place->card.text) return {};
    UIDs = {place->card.UID};
    journal_.remember(place->card);
    done = journal_.change({card}, UIDs);
  }
  if (!done) return named(done.error());
  KRResult<Cards>& now = done->now;
  if (!now) return named(now.error());
  if (now->size() != 1) return changedOutside(*group.group);
  taken_.insert(UIDs.front());
  if (place == lists_.end()) {
    lists_.push_back({group.group, std::move(now->begin()->second)});
  } else {
    place->card = std::move(now->begin()->second);
  }
  return {};
}

KRResult<void> KRDesktopBookStore::removeLists(const std::vector<KRStoredGroup>& groups) {
  for (size_t i = 0; i < lists_.size();) {
    const bool isKept = std::any_of(groups.begin(), groups.end(),
                                    [&](const KRStoredGroup& group) { return group.group == lists_[i].group; });
    if (isKept) {
      ++i;
      continue;
    }
    journal_.remember(lists_[i].card);
    if (KRResult<void> done = journal_.remove({lists_[i].card.UID}); !done) return named(done.error());
    taken_.erase(lists_[i].card.UID);
    lists_.erase(lists_.begin() + static_cast<std::ptrdiff_t>(i));
  }
  return {};
}
