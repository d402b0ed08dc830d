#include "issues/KRIssueFindControl.h"

#include "issues/KRIssueManager.h"
#include "platform/KRThread.h"

namespace {

template <class T>
std::shared_ptr<KRList<T>> copied(const KRList<T>* list) {
  auto copy = std::make_shared<KRList<T>>();
  if (list != nullptr) {
    for (T& each : *list) copy->append(&each);
  }
  return copy;
}

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

void KRIssueFindControl::findThreed([[maybe_unused]] const KRValue& ignored) {
  sendStart();
  const auto result = krMake<KRIssueFindResult>();
  const KRRef<KRAddressBook> book = addressBook();
  result->setAddressBook(book);
  // A copy: the host may change its choice while this run goes on.
  const auto issues = KRIssueManager::shareIssueManager().useIssues().copy();
  if (!issues.empty()) {
    const KRPersonList* persons = book ? &book->allPersons() : nullptr;
    // Single precision as everywhere in percentages, so the bands need not add up to 100.
    const double step = static_cast<double>(100.0F / static_cast<float>(issues.size()));
    double base = 0.0;
    for (const KRRef<KRIssue>& issue : issues) {
      if (const auto detector = detectorForIssue(issue.get())) {
        const auto scaled = [&](double percent) { sendFinding(percent / 100.0 * step + base); };
        const auto context = detector->find(persons, scaled);
        if (context && !context->issueObjects().isEmpty()) result->addContext(context.get());
      }
      base += step;
      sendFinding(base);
    }
  }
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
