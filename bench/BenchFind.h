#pragma once

#include <memory>

#include "issues/KRIssueFindControl.h"
#include "issues/KRIssueFindControlDelegate.h"
#include "issues/KRIssueFindResult.h"

/// Keeps the result of a find.
class KRBenchFindListener : public KRIssueFindControlDelegate {
 public:
  void KRIssueFindControlDelegate_FindEnd(const KRRef<KRIssueFindResult>& found, KRIssueFindControl&) override {
    result = found;
  }
  KRRef<KRIssueFindResult> result;
};

/// The find over a book, on this thread.
inline KRRef<KRIssueFindResult> krBenchFind(const KRRef<KRAddressBook>& book) {
  const auto listener = std::make_shared<KRBenchFindListener>();
  const auto control = KRIssueFindControl::initWithAddressBook(book);
  control->setDelegate(listener);
  control->findThreed();
  return listener->result;
}
