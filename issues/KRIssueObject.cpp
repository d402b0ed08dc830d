#include "issues/KRIssueObject.h"

#include "handles/KRIssueHandle.h"
#include "issues/KRIssueContext.h"

KRIssueObject::KRIssueObject() = default;

KRIssueObject::~KRIssueObject() {
  context_.set(*this, nullptr);
}

KRRef<KRIssueHandle> KRIssueObject::handle() const {
  return handle_.get();
}

void KRIssueObject::setHandle(KRRef<KRIssueHandle> handle) {
  handle_.set(std::move(handle));
}

KRRef<KRIssueContext> KRIssueObject::context() const {
  return context_.get();
}

void KRIssueObject::setContext(KRIssueContext* context) {
  context_.set(*this, context);
}

KRRef<KRIssueContext> KRIssueObject::issueContext() const {
  return context();
}

KRRef<KRIssue> KRIssueObject::issue() const {
  const KRRef<KRIssueContext> context = this->context();
  return context ? context->issue() : KRRef<KRIssue>();
}

void KRIssueObject::fix() {
  // The fix takes the finding out of the list that may be all that keeps it.
  const KRRef<KRIssueObject> alive(this);
  if (const KRRef<KRIssueHandle> chosen = handle()) chosen->fix(this);
}

void KRIssueObject::prefetchWhole() const noexcept {
  krPrefetchLinesToWrite(this, sizeof *this);
  KRCells<KRIssueObject>::prefetchToGive(this);
}

void KRIssueObject::prefetchParts() const noexcept {
  persons_.prefetch();
  // What an info consists of, and the sentence, were made together with it and mostly lie around it.
  constexpr size_t kBefore = kKRCacheLine;
  constexpr size_t kBehind = 6 * kKRCacheLine;
  if (const auto info = reinterpret_cast<uintptr_t>(info_.borrow().object()); info != 0)
    krPrefetchLinesToWrite(reinterpret_cast<const void*>(info - kBefore), kBefore + kBehind);
  prefetchNeighbours();
}

void KRIssueObject::removePerson(const IKRPerson* person) {
  persons_.remove(person);
}
