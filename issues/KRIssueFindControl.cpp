#include "issues/KRIssueFindControl.h"

#include <thread>
#include <typeinfo>
#include <vector>

#include "issues/KRIssueManager.h"
#include "platform/KRThread.h"
#include "platform/KRWorkAside.h"
#include "platform/KRZeroMemory.h"

namespace {

template <class T>
std::shared_ptr<KRList<T>> copied(const KRList<T>* list) {
  auto copy = std::make_shared<KRList<T>>();
  if (list != nullptr) {
    for (T& each : *list) copy->append(&each);
  }
  return copy;
}

/// Sorts the contexts of a run beside it: what is left for the end are those that only the run's own thread may sort.
class Sorting {
 public:
  /// What a host's own detectors do with their contexts afterwards nobody knows: those are sorted at once.
  explicit Sorting(bool isBeside) : aside_(isBeside ? std::thread::hardware_concurrency() : 1) {}

  void add(const KRRef<KRIssueContext>& context) {
    aside_.add([this, context] {
      if (!context->sortRecords()) left_.push_back(context);
    });
  }
  void finish() {
    aside_.wait();
    for (const KRRef<KRIssueContext>& context : left_) context->sort();
    left_.clear();
  }

 private:
  std::vector<KRRef<KRIssueContext>> left_;
  KRWorkAside aside_;
};

}  // namespace

KRIssueFindControl::~KRIssueFindControl() = default;

KRRef<KRIssueFindControl> KRIssueFindControl::initWithAddressBook(KRRef<KRAddressBook> addressBook) {
  if (!addressBook) return {};
  auto control = krMake<KRIssueFindControl>();
  control->setAddressBook(std::move(addressBook));
  return control;
}

KRRef<KRIssueFindControl> KRIssueFindControl::initWithIssues(const KRIssueList* issues) {
  auto control = krMake<KRIssueFindControl>();
  control->setIssueArray(copied(issues));
  return control;
}

KRRef<KRIssueFindControl> KRIssueFindControl::initWithIssues(const KRIssueList* issues, const KRPersonList* persons) {
  auto control = initWithIssues(issues);
  control->setPersonArray(copied(persons));
  return control;
}

bool KRIssueFindControl::startFind() {
  const KRRef<KRIssueFindControl> self(this);
  return krDetach(self, [this] { findThreed(); });
}

KRRef<KRIssueFind> KRIssueFindControl::detectorForIssue(KRIssue* issue) {
  return KRIssueFind::issueFindWithIssue(issue);
}

/// The listener of a run's progress, whoever it is at the time.
class KRIssueFindControl::Listener {
 public:
  explicit Listener(KRIssueFindControl& control) : control_(control) {}

  void send(double progress) {
    const uint32_t changes = control_.delegateChanges_.load(std::memory_order_acquire);
    if (changes != seen_) delegate_ = control_.delegate();
    seen_ = changes;
    if (delegate_) delegate_->KRIssueFindControlDelegate_Finding(progress, control_);
  }

 private:
  KRIssueFindControl& control_;
  // Counted before it is asked for: a change in between is seen the next time.
  uint32_t seen_ = control_.delegateChanges_.load(std::memory_order_acquire);
  std::shared_ptr<Delegate> delegate_ = control_.delegate();
};

void KRIssueFindControl::findThreed([[maybe_unused]] const KRValue& ignored) {
  sendStart();
  const auto result = krMake<KRIssueFindResult>();
  const KRRef<KRAddressBook> book = addressBook();
  result->setAddressBook(book);
  // A copy: the host may change its choice while this run goes on.
  const auto issues = KRIssueManager::shareIssueManager().useIssues().copy();
  Sorting sorting(typeid(*this) == typeid(KRIssueFindControl));
  if (!issues.empty()) {
    const KRPersonList* persons = book ? &book->allPersons() : nullptr;
    // Single precision as everywhere in percentages, so the bands need not add up to 100.
    const double step = static_cast<double>(100.0F / static_cast<float>(issues.size()));
    double base = 0.0;
    Listener listener(*this);
    for (const KRRef<KRIssue>& issue : issues) {
      if (const auto detector = detectorForIssue(issue.get())) {
        const auto scaled = [&](double percent) { listener.send(percent / 100.0 * step + base); };
        const auto context = detector->find(persons, scaled);
        if (context && !context->issueObjects().isEmpty()) {
          result->addUnsortedContext(context.get());
          sorting.add(context);
        }
      }
      base += step;
      listener.send(base);
    }
  }
  sorting.finish();
  // The tables of the detectors came one after the other.
  KRZeroMemory::giveBackSpare();
  sendEnd(result);
}

void KRIssueFindControl::sendStart() {
  if (const auto listener = delegate()) listener->KRIssueFindControlDelegate_FindStart(*this);
}

void KRIssueFindControl::sendFinding(double progress) {
  if (const auto listener = delegate()) listener->KRIssueFindControlDelegate_Finding(progress, *this);
}

void KRIssueFindControl::sendEnd(const KRRef<KRIssueFindResult>& result) {
  if (const auto listener = delegate()) listener->KRIssueFindControlDelegate_FindEnd(result, *this);
}
