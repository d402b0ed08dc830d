#include "issues/KRIssueContext.h"

#include <algorithm>

#include "handles/KRIssueHandle.h"
#include "issues/KRFindingsAhead.h"
#include "issues/KRIssueFindResult.h"
#include "issues/KRSortNames.h"
#include "platform/KRFatal.h"
#include "platform/KRHashIndex.h"

KRIssueContext::KRIssueContext(KRRef<KRIssue> issue) : issue_(std::move(issue)) {}

KRIssueContext::~KRIssueContext() {
  result_.set(*this, nullptr);
}

KRRef<KRIssue> KRIssueContext::issue() const {
  return issue_.get();
}

void KRIssueContext::setIssue(KRRef<KRIssue> issue) {
  issue_.set(std::move(issue));
}

KRRef<KRIssueFindResult> KRIssueContext::result() const {
  return result_.get();
}

void KRIssueContext::setResult(KRIssueFindResult* result) {
  result_.set(*this, result);
}

KRRef<KRIssueFindResult> KRIssueContext::issueFindResult() const {
  return result();
}

void KRIssueContext::setObjects(const KRList<KRIssueObject>& objects) {
  const auto given = objects.copy();
  objects_.removeAll();
  for (const auto& object : given) objects_.append(object);
}

void KRIssueContext::addIssueObject(KRIssueObject* object) {
  if (object == nullptr) return;
  objects_.append(object);
  object->setContext(this);
}

void KRIssueContext::removeIssueObject(KRIssueObject* object) {
  objects_.remove(object);
}

KRPersonArray KRIssueContext::allPersons() {
  if (const auto known = allArray_.get()) return *known;
  std::vector<IKRPerson*> all;
  KRHashIndex places;
  const auto isListed = [&](const IKRPerson* person) {
    const auto isIt = [&](uint32_t place) { return krEqualObjects(all[place], person); };
    return places.find(person->hash(), isIt) != KRHashIndex::kNone;
  };
  for (const KRIssueObject& object : objects_) {
    const KRPersonArray persons = object.persons();
    const size_t before = all.size();
    for (IKRPerson* person : persons) {
      if (!isListed(person)) all.push_back(person);
    }
    // Only now, so that a person listed twice inside this finding stays twice.
    for (size_t i = before; i < all.size(); ++i) {
      if (!isListed(all[i])) places.add(all[i]->hash(), static_cast<uint32_t>(i));
    }
  }
  KRPersonArray array{std::span<IKRPerson* const>(all)};
  allArray_.set(array);
  return array;
}

std::vector<KRValue> KRIssueContext::allInfo() const {
  std::vector<KRValue> all;
  for (const KRIssueObject& object : objects_) {
    KRValue info = object.info();
    if (!info.isNothing()) all.push_back(std::move(info));
  }
  return all;
}

void KRIssueContext::setHandleToAllObject(KRIssueHandle* handle) {
  const KRRef<KRIssue> issue = this->issue();
  if (handle == nullptr || !issue || !issue->handelArray().contains(handle)) return;
  for (KRIssueObject& object : objects_) object.setHandle(KRRef<KRIssueHandle>(handle));
}

void KRIssueContext::fixAll() {
  // The last fix may take the context out of the result that is all that keeps it.
  const KRRef<KRIssueContext> alive(this);
  const uint32_t changes = objects_.changes();
  const size_t count = objects_.count();
  // A change is noticed when the walk goes on to a further element: the fix of the last one may still take it out.
  for (size_t i = 0; i < std::max(count, objects_.count()); ++i) {
    if (objects_.changes() != changes) KRFatal("the findings of a context were changed while they were being fixed");
    objects_.at(i)->fix();
  }
}

/// Asks for what fixing the findings takes that come some steps after the first: the finding, what it refers to, where
/// the result has its persons, and where a fix deletes these, their other findings.
void KRIssueContext::prefetchFixes(const KRIssueFindResult* result, bool deletesPersons) const noexcept {
  constexpr size_t kStep = 12;
  if (const KRIssueObject* finding = objects_.ahead(6 * kStep)) finding->prefetchWhole();
  if (const KRIssueObject* finding = objects_.ahead(5 * kStep)) finding->prefetchParts();
  if (result == nullptr) return;
  if (const KRIssueObject* finding = objects_.ahead(4 * kStep)) result->prefetchPlaces(*finding);
  if (const KRIssueObject* finding = objects_.ahead(3 * kStep)) result->prefetchEntries(*finding);
  if (const KRIssueObject* finding = objects_.ahead(2 * kStep)) result->prefetchLinks(*finding);
  if (!deletesPersons) return;
  if (const KRIssueObject* finding = objects_.ahead(kStep)) result->prefetchFindings(*finding);
}

void KRIssueContext::fixAllForProgress(const KRProgress& progress) {
  const KRRef<KRIssueContext> alive(this);
  const auto count = static_cast<int64_t>(objects_.count());
  int64_t left = count;
  const KRRef<KRIssueFindResult> result = this->result();
  // Nearly always all findings have the same handle.
  const KRRef<KRIssueHandle> handle = left == 0 ? KRRef<KRIssueHandle>() : objects_.first()->handle();
  const bool deletesPersons = handle && handle->deletesPersons();
  while (left != 0) {
    prefetchFixes(result.get(), deletesPersons);
    objects_.first()->fix();
    left = static_cast<int64_t>(objects_.count());
    progress(static_cast<double>(static_cast<float>(count - left) * 100.0F / static_cast<float>(count)));
  }
}

void KRIssueContext::sort() {
  KRSortNames names;
  names.reserve(objects_.count());
  KRFindingsAhead(objects_, KROrdinal::Name).walk([&](const KRIssueObject& object) {
    names.add(*object.borrowPersons().first());
    return true;
  });
  reorder(names);
}

bool KRIssueContext::sortRecords() {
  KRSortNames names;
  names.reserve(objects_.count());
  const bool areRecords = KRFindingsAhead(objects_, KROrdinal::Name).walk([&](const KRIssueObject& object) {
    const IKRPerson& person = *object.borrowPersons().first();
    if (!KRSortNames::isRecord(person)) return false;
    names.add(person);
    return true;
  });
  if (areRecords) reorder(names);
  return areRecords;
}

void KRIssueContext::reorder(KRSortNames& names) {
  const std::vector<uint32_t> order = names.order();
  if (!order.empty()) objects_.reorder(order);
}
