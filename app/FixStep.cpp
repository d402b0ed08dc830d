#include "app/FixStep.h"

#include <algorithm>

#include "contacts/KRTrashAddressBook.h"
#include "handles/KRIssueHandle.h"
#include "issues/KRIssueContext.h"
#include "issues/KRNameConstraintManager.h"

namespace {

/// The first place in the list whose element stood behind `place`.
template <class T>
size_t placeAmong(const KRList<T>& list, const std::unordered_map<const T*, size_t>& places, size_t place) {
  size_t low = 0;
  size_t high = list.count();
  while (low < high) {
    const size_t middle = low + (high - low) / 2;
    const auto found = places.find(list.at(middle));
    if (found != places.end() && found->second < place) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low;
}

template <class T>
size_t placeIn(const std::unordered_map<const T*, size_t>& places, const T& object) {
  const auto found = places.find(&object);
  return found == places.end() ? places.size() : found->second;
}

}  // namespace

FindingPlaces::FindingPlaces(const KRIssueFindResult& result) {
  for (const KRIssueContext& context : result.contexts()) {
    contexts_.emplace(&context, contexts_.size());
    for (const KRIssueObject& finding : context.objects()) findings_.emplace(&finding, findings_.size());
  }
}

void FindingPlaces::insert(KRIssueObject& finding, KRIssueContext& context) const {
  KRList<KRIssueObject>& list = context.objects();
  list.insert(&finding, placeAmong(list, findings_, placeIn(findings_, finding)));
}

void FindingPlaces::insert(KRIssueContext& context, KRIssueFindResult& result) const {
  result.insertContext(&context, placeAmong(result.contexts(), contexts_, placeIn(contexts_, context)));
}

FixStep::FixStep(KRAddressBook& book, KRIssueFindResult& result, const FindingPlaces& places)
    : book_(book),
      result_(result),
      places_(places),
      before_(book.allPersons().copy()),
      trashCount_(KRTrashAddressBook::ShareTrashAddressBook()->allPersonsCount()) {
  KRNameConstraintManager& settings = KRNameConstraintManager::ShareNameConstrainManager();
  prefixes_ = settings.prefixItemArray();
  suffixes_ = settings.suffixItemArray();
}

void FixStep::remember(const KRIssueObject& finding) {
  const KRPersonArray persons = finding.persons();
  for (IKRPerson* person : persons) {
    const KRList<KRIssueObject>* others = result_.issueObjectsOfPerson(person);
    if (others == nullptr) continue;
    for (KRIssueObject& other : *others) {
      if (findings_.contains(&other)) continue;
      KRRef<KRIssueContext> context = other.context();
      // Findings that a narrowed scan has left out stay out.
      if (!context || !context->objects().contains(&other)) continue;
      findings_.emplace(&other, Finding{KRRef<KRIssueObject>(&other), std::move(context), other.persons()});
    }
  }
  if (persons.isEmpty()) return;
  if (auto* main = dynamic_cast<ABPerson*>(persons.first())) remember(*main);
}

void FixStep::remember(ABPerson& person) {
  if (values_.contains(&person)) return;
  Values values{KRRef<ABPerson>(&person), person.record(), {}};
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    if (!person.isChanged(property->ordinal())) continue;
    values.changed.emplace_back(property, person.valueByPropertyName(property->name()));
  }
  values_.emplace(&person, std::move(values));
}

void FixStep::seal() {
  // Persons keep their order and new ones stand behind them, so one walk tells what went and what came.
  size_t place = 0;
  for (IKRPerson& person : book_.allPersons()) {
    while (place < before_.size() && before_[place].get() != &person) {
      removed_.push_back({place, before_[place]});
      ++place;
    }
    if (place == before_.size()) {
      added_.emplace_back(&person);
    } else {
      ++place;
    }
  }
  for (; place < before_.size(); ++place) removed_.push_back({place, before_[place]});
  before_ = {};
  place = 0;
  for (IKRPerson& person : KRTrashAddressBook::ShareTrashAddressBook()->allPersons()) {
    if (place++ >= trashCount_) trashed_.emplace_back(&person);
  }
}

void FixStep::undo() {
  restoreAllowed();
  restorePersons();
  restoreFindings();
}

void FixStep::restorePersons() {
  book_.removePersons(KRPersonArray(added_));
  for (const Removed& each : removed_) {
    // Back at its own place, where the store has it too, so that nothing needs to be written.
    book_.allPersons().insert(each.person.get(), each.place);
    if (auto* record = dynamic_cast<ABPerson*>(each.person.get())) record->setAddressBook(&book_);
  }
  KRTrashAddressBook::ShareTrashAddressBook()->removePersons(KRPersonArray(trashed_));
  for (auto& [person, values] : values_) {
    values.person->setRecord(values.record);
    for (const auto& [property, value] : values.changed) values.person->setValue(value, property);
  }
}

void FixStep::restoreFindings() {
  for (auto& [object, each] : findings_) {
    KRIssueContext& context = *each.context;
    if (context.objects().contains(object)) {
      const KRPersonArray present = each.finding->persons();
      for (const IKRPerson* person : present) result_.removeObjectForPerson(each.finding.get(), person);
    } else {
      if (!result_.contexts().contains(&context)) places_.insert(context, result_);
      places_.insert(*each.finding, context);
    }
    each.finding->setPersons(each.persons);
    each.finding->setHandle({});
    for (const IKRPerson* person : each.persons) result_.addObjectForPerson(each.finding.get(), person);
  }
}

void FixStep::restoreAllowed() const {
  KRNameConstraintManager& settings = KRNameConstraintManager::ShareNameConstrainManager();
  if (settings.prefixItemArray() != prefixes_) settings.setPrefixItemArray(&prefixes_);
  if (settings.suffixItemArray() != suffixes_) settings.setSuffixItemArray(&suffixes_);
}
