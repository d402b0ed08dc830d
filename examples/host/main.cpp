// A small host of the library: opens a vCard file as an address book, runs a find over it and prints what it is told.

#include <future>
#include <iostream>

#include "contacts/vcard/KRVCardBook.h"
#include "issues/KRIssue.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueFindControl.h"
#include "issues/KRIssueFindControlDelegate.h"
#include "issues/KRIssueFindResult.h"
#include "issues/KRIssueObject.h"
#include "platform/KRPreferencesOverlay.h"

namespace {

/// The find runs on a thread of its own; this listener hands the result over to whoever waits for it.
class Listener : public KRIssueFindControlDelegate {
 public:
  void KRIssueFindControlDelegate_FindEnd(const KRRef<KRIssueFindResult>& result, KRIssueFindControl&) override {
    result_.set_value(result);
  }

  KRRef<KRIssueFindResult> waitForResult() { return result_.get_future().get(); }

 private:
  std::promise<KRRef<KRIssueFindResult>> result_;
};

void print(const KRIssueFindResult& result) {
  for (const KRIssueContext& context : result.contexts()) {
    std::cout << context.issue()->displayName().view() << '\n';
    for (const KRIssueObject& finding : context.objects()) {
      std::cout << "  " << finding.describe().view() << "  ";
      for (const IKRPerson* person : finding.persons()) std::cout << '[' << person->showName().view() << ']';
      std::cout << '\n';
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: host FILE.vcf\n";
    return 2;
  }
  // Settings that are made on the way stay in memory: this host leaves the user's preferences as they are.
  KRPreferences::setStandard(krMake<KRPreferencesOverlay>(KRPreferences::standard()));

  const auto book = KRVCardBook::open(argv[1]);
  if (!book) {
    std::cerr << book.error().sentence << '\n';
    return 2;
  }
  const auto listener = std::make_shared<Listener>();
  const auto control = KRIssueFindControl::initWithAddressBook(book.value());
  control->setDelegate(listener);
  control->startFind();
  print(*listener->waitForResult());
  return 0;
}
