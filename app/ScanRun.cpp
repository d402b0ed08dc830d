#include "app/ScanRun.h"

#include <algorithm>
#include <future>
#include <memory>
#include <unordered_set>
#include <vector>

#include "app/EventLine.h"
#include "app/ScanDocument.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueFindControl.h"
#include "issues/KRIssueObject.h"

namespace {

/// Hands the result over to the thread that waits for it.
class Waiter : public KRIssueFindControlDelegate {
 public:
  void KRIssueFindControlDelegate_FindEnd(const KRRef<KRIssueFindResult>& result,
                                          KRIssueFindControl& /*findControl*/) override {
    result_.set_value(result);
  }

  KRRef<KRIssueFindResult> wait() { return result_.get_future().get(); }

 private:
  std::promise<KRRef<KRIssueFindResult>> result_;
};

class ProgressListener : public Waiter {
 public:
  explicit ProgressListener(ProgressBar& bar) : bar_(bar) {}

  void KRIssueFindControlDelegate_Finding(double progress, KRIssueFindControl& /*findControl*/) override {
    bar_.show("Scanning", progress);
  }

 private:
  ProgressBar& bar_;
};

/// Writes on the run's thread, in the order of the calls, while the main thread waits.
class EventListener : public Waiter {
 public:
  explicit EventListener(Output& out) : out_(out) {}

  void KRIssueFindControlDelegate_FindStart(KRIssueFindControl& /*findControl*/) override {
    writeEvent(out_, "start", [](JsonWriter&) {});
  }

  void KRIssueFindControlDelegate_Finding(double progress, KRIssueFindControl& /*findControl*/) override {
    writeEvent(out_, "finding", [progress](JsonWriter& json) {
      json.key("progress");
      json.number(progress);
    });
  }

 private:
  Output& out_;
};

KRRef<KRIssueFindResult> runAndWait(const KRRef<KRAddressBook>& book, const std::shared_ptr<Waiter>& listener) {
  const KRRef<KRIssueFindControl> control = KRIssueFindControl::initWithAddressBook(book);
  control->setDelegate(listener);
  control->startFind();
  return listener->wait();
}

/// Takes out of the result what concerns no contact that is meant.
void narrow(KRIssueFindResult& result, KRAddressBook& book, const PersonFilter& filter) {
  if (!filter.isNarrow()) return;
  std::unordered_set<const IKRPerson*> meant;
  for (const IKRPerson& person : book.allPersons()) {
    if (filter.matches(person)) meant.insert(&person);
  }
  const auto concernsNobody = [&](const KRIssueObject& finding) {
    const KRPersonArray persons = finding.persons();
    return std::none_of(persons.begin(), persons.end(), [&](const IKRPerson* each) { return meant.count(each) != 0; });
  };
  std::vector<KRRef<KRIssueContext>> emptied;
  for (KRIssueContext& context : result.contexts()) {
    std::vector<KRRef<KRIssueObject>> others;
    for (KRIssueObject& finding : context.objects()) {
      if (concernsNobody(finding)) others.emplace_back(&finding);
    }
    for (const KRRef<KRIssueObject>& finding : others) context.removeIssueObject(finding.get());
    if (context.objects().isEmpty()) emptied.emplace_back(&context);
  }
  for (const KRRef<KRIssueContext>& context : emptied) result.removeContext(context.get());
}

}  // namespace

KRRef<KRIssueFindResult> ScanRun::withProgress(const KRRef<KRAddressBook>& book, const PersonFilter& filter,
                                               ProgressBar& progress, HiddenFindings* hidden) {
  KRRef<KRIssueFindResult> result = runAndWait(book, std::make_shared<ProgressListener>(progress));
  narrow(*result, *book, filter);
  if (hidden != nullptr) hidden->count = hidden->ignored.takeOutOf(*result);
  return result;
}

KRRef<KRIssueFindResult> ScanRun::withEvents(const KRRef<KRAddressBook>& book, const KRStringList& scanned,
                                             const PersonFilter& filter, Output& out, HiddenFindings* hidden) {
  KRRef<KRIssueFindResult> result = runAndWait(book, std::make_shared<EventListener>(out));
  narrow(*result, *book, filter);
  if (hidden != nullptr) hidden->count = hidden->ignored.takeOutOf(*result);
  writeEvent(out, "end", [&](JsonWriter& json) {
    json.key("result");
    ScanDocument::write(json, *result, scanned, nullptr, hidden != nullptr ? &hidden->count : nullptr);
  });
  return result;
}
