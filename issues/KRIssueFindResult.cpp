#include "issues/KRIssueFindResult.h"

#include "issues/KRPersonIndex.h"

KRIssueFindResult::KRIssueFindResult() : index_(std::make_unique<KRPersonIndex>(*this)) {}

KRIssueFindResult::~KRIssueFindResult() = default;

KRRef<KRAddressBook> KRIssueFindResult::addressBook() const {
  return addressBook_.get();
}

void KRIssueFindResult::setAddressBook(KRRef<KRAddressBook> addressBook) {
  addressBook_.set(std::move(addressBook));
}

void KRIssueFindResult::setContexts(const KRList<KRIssueContext>& contexts) {
  const auto given = contexts.copy();
  contexts_.removeAll();
  for (const auto& context : given) contexts_.append(context);
}

void KRIssueFindResult::addContext(KRIssueContext* context) {
  addUnsortedContext(context);
  if (context != nullptr) context->sort();
}

void KRIssueFindResult::addUnsortedContext(KRIssueContext* context) {
  if (context == nullptr) return;
  contexts_.append(context);
  context->setResult(this);
  index_->addAll(context->objects());
}

void KRIssueFindResult::insertContext(KRIssueContext* context, size_t atIndex) {
  if (context == nullptr) return;
  contexts_.insert(context, atIndex);
  context->setResult(this);
}

void KRIssueFindResult::removeContext(KRIssueContext* context) {
  contexts_.remove(context);
}

void KRIssueFindResult::addObject(KRIssueObject* object, const KRString& forPersonAddress) {
  if (object != nullptr) index_->add(object, forPersonAddress);
}

void KRIssueFindResult::addObjectForPerson(KRIssueObject* object, const IKRPerson* person) {
  if (object != nullptr && person != nullptr) index_->add(object, person);
}

void KRIssueFindResult::removeObject(KRIssueObject* object, const KRString& byPersonAddress) {
  index_->remove(object, byPersonAddress);
}

void KRIssueFindResult::removeObjectForPerson(KRIssueObject* object, const IKRPerson* person) {
  index_->remove(object, person);
}

void KRIssueFindResult::prefetchPlaces(const KRIssueObject& object) const noexcept {
  index_->prefetchPlaces(object);
}

void KRIssueFindResult::prefetchEntries(const KRIssueObject& object) const noexcept {
  index_->prefetchEntries(object);
}

void KRIssueFindResult::prefetchLinks(const KRIssueObject& object) const noexcept {
  index_->prefetchLinks(object);
}

void KRIssueFindResult::prefetchFindings(const KRIssueObject& object) const noexcept {
  index_->prefetchFindings(object);
}

KRList<KRIssueObject>* KRIssueFindResult::issueObjectByPerson(const KRString& personAddress) {
  return index_->find(personAddress);
}

KRList<KRIssueObject>* KRIssueFindResult::issueObjectsOfPerson(const IKRPerson* person) {
  return index_->find(person);
}

std::vector<KRRef<KRIssueObject>> KRIssueFindResult::copyOfIssueObjects(const IKRPerson* person) {
  return index_->copy(person);
}
