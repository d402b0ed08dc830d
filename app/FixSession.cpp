#include "app/FixSession.h"

#include <algorithm>
#include <utility>

#include "app/DisplayText.h"
#include "app/FixChoice.h"
#include "app/PersonText.h"
#include "handles/KRHandleNames.h"
#include "issues/KRFindingKey.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueFind.h"

namespace {

std::string nameOf(const KRIssueObject& finding) {
  const KRPersonArray persons = finding.persons();
  return persons.isEmpty() ? std::string() : personText(*persons.first());
}

bool changesSomething(const KRIssueHandle& handle) {
  return fixKindOf(handle.name()) != FixKind::Nothing;
}

}  // namespace

FixSession::FixSession(KRAddressBook& book, KRRef<KRIssueFindResult> result, KRIgnoredFindings* remembered)
    : book_(book), result_(std::move(result)), remembered_(remembered), places_(*result_) {
  for (KRIssueContext& context : result_->contexts()) {
    for (KRIssueObject& finding : context.objects()) all_.emplace_back(&finding);
  }
}

bool FixSession::isOpen(size_t place) const {
  const KRRef<KRIssueContext> context = all_[place]->context();
  return context->objects().contains(all_[place].get());
}

KRIssueObject* FixSession::current() const {
  return at_ < all_.size() ? all_[at_].get() : nullptr;
}

size_t FixSession::openCount() const {
  size_t count = 0;
  for (const KRIssueContext& context : result_->contexts()) count += context.objects().count();
  return count;
}

size_t FixSession::openCountOfIssue() const {
  const KRIssueObject* finding = current();
  return finding == nullptr ? 0 : finding->context()->objects().count();
}

std::vector<KRRef<KRIssueHandle>> FixSession::fixes() const {
  const KRIssueObject* finding = current();
  if (finding == nullptr) return {};
  std::vector<KRRef<KRIssueHandle>> handles = FixChoices::allowed(*finding->issue());
  std::erase_if(handles, [](const auto& handle) { return !changesSomething(*handle); });
  return handles;
}

void FixSession::rememberIgnored(const KRIssueHandle& handle, KRIssueObject& finding, Findings& remembered) {
  if (remembered_ == nullptr || !sameText(handle.name(), KRHandleNameIgnore)) return;
  if (remembered_->add(finding)) remembered.emplace_back(&finding);
}

size_t FixSession::unsavedRememberedCount() const {
  size_t count = 0;
  for (const Step& step : steps_) count += step.remembered.size();
  return count;
}

void FixSession::finish(FixStep memory, std::string name, size_t at, Findings remembered) {
  memory.seal();
  steps_.push_back({std::move(name), at, std::move(memory), std::move(remembered)});
  moveOn();
}

FixEffect FixSession::fix(const KRRef<KRIssueHandle>& handle) {
  KRIssueObject& finding = *current();
  std::string name = std::string(handle->title(&finding).view()) + ": " + nameOf(finding);
  FixStep memory(book_, *result_, places_);
  memory.remember(finding);
  Findings remembered;
  rememberIgnored(*handle, finding, remembered);
  FixEffect effect = fixFinding(finding, handle);
  finish(std::move(memory), std::move(name), at_, std::move(remembered));
  return effect;
}

size_t FixSession::fixAllOfIssue(const KRRef<KRIssueHandle>& handle) {
  const KRRef<KRIssueContext> context = current()->context();
  const std::string title(handle->title(current()).view());
  FixStep memory(book_, *result_, places_);
  Findings remembered;
  size_t count = 0;
  while (!context->objects().isEmpty()) {
    KRIssueObject& finding = *context->objects().first();
    memory.remember(finding);
    rememberIgnored(*handle, finding, remembered);
    fixFinding(finding, handle, FixWatch::Detail::Counts);
    ++count;
  }
  finish(std::move(memory), title + ": " + counted(count, "finding", "findings"), at_, std::move(remembered));
  return count;
}

void FixSession::ignore() {
  fix(KRIssueHandle::issueHandleWithName(KRHandleNameIgnore));
}

bool FixSession::edit(ABPerson& person, const IKRPerson& original, const IKRPerson& edited) {
  const KRRef<KRIssueObject> finding(current());
  FixStep memory(book_, *result_, places_);
  memory.remember(*finding);
  memory.remember(person);
  std::string name = "Edit: " + personText(person);
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    const KRRef<KRStoredValue> value = edited.valueByPropertyName(property->name());
    const KRRef<KRStoredValue> former = original.valueByPropertyName(property->name());
    if (!krEqualObjects(value.get(), former.get())) person.setValue(value, property);
  }
  const bool settled = isSettled(*finding);
  if (settled) fixFinding(*finding, KRIssueHandle::issueHandleWithName(KRHandleNameEdit));
  finish(std::move(memory), std::move(name), at_);
  return settled;
}

/// Asks the detector again, of the finding's own contacts alone: the book need not be scanned for that.
bool FixSession::isSettled(KRIssueObject& finding) const {
  const KRRef<KRIssue> issue = finding.issue();
  const KRRef<KRIssueFind> detector = KRIssueFind::issueFindWithIssue(issue.get());
  if (!detector) return true;
  KRPersonList persons;
  const KRPersonArray concerned = finding.persons();
  for (IKRPerson* person : concerned) persons.append(person);
  return !detector->find(&persons, [](double) {});
}

void FixSession::moveOn() {
  while (at_ < all_.size() && !isOpen(at_)) ++at_;
}

void FixSession::skip() {
  if (at_ < all_.size()) ++at_;
  moveOn();
}

void FixSession::back() {
  size_t place = at_;
  while (place > 0 && !isOpen(--place)) {
  }
  if (place < all_.size() && isOpen(place)) at_ = place;
}

void FixSession::restart() {
  at_ = 0;
  moveOn();
}

void FixSession::undo() {
  if (steps_.empty()) return;
  steps_.back().memory.undo();
  // Their contacts are as they were when they were ignored, and so are their keys.
  for (const auto& finding : steps_.back().remembered) remembered_->forget(krFindingKey(*finding));
  at_ = steps_.back().at;
  steps_.pop_back();
}
