#pragma once

#include <utility>
#include <vector>

#include "contacts/model/KRAddressBook.h"
#include "handles/KRIssueHandle.h"
#include "issues/KRIssue.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueFindResult.h"
#include "issues/KRIssueNames.h"
#include "issues/KRIssueObject.h"
#include "tests/support/KRNamedPerson.h"

// Results made by hand, as hosts and detectors make them.

inline KRRef<IKRPerson> krNamed(const char* displayName) {
  return krMake<KRNamedPerson>(KRString(displayName));
}

inline KRRef<KRIssueObject> krFinding(const std::vector<KRRef<IKRPerson>>& persons, const char* describe = "") {
  auto finding = krMake<KRIssueObject>();
  finding->setPersons(KRPersonArray(persons));
  finding->setDescribe(KRString(describe));
  return finding;
}

inline KRRef<KRIssueContext> krContext(const std::vector<KRRef<KRIssueObject>>& findings,
                                       const KRString& issueName = KRIssueBlankName) {
  auto context = krMake<KRIssueContext>(krMake<KRIssue>(issueName, "what this test is about"_kr));
  for (const auto& finding : findings) context->addIssueObject(finding.get());
  return context;
}

inline KRRef<KRIssueFindResult> krResult(const std::vector<KRRef<KRIssueContext>>& contexts) {
  auto result = krMake<KRIssueFindResult>();
  result->setAddressBook(krMake<KRAddressBook>("book"_kr, "Book"_kr));
  for (const auto& context : contexts) result->addContext(context.get());
  return result;
}

/// The list as plain pointers, to be compared with what is expected; no list has none.
template <class T>
std::vector<T*> krPlain(const KRList<T>* list) {
  std::vector<T*> plain;
  if (list == nullptr) return plain;
  for (T& each : *list) plain.push_back(&each);
  return plain;
}
template <class T>
std::vector<T*> krPlain(const KRList<T>& list) {
  return krPlain(&list);
}
inline std::vector<IKRPerson*> krPlain(const KRPersonArray& array) {
  return {array.begin(), array.end()};
}

/// A fix that leaves its finding where it is and counts.
class KRLeavingHandle : public KRIssueHandle {
 public:
  using KRIssueHandle::fix;
  void fix(KRIssueObject* finding) override {
    ++fixed;
    last = finding;
  }

  int fixed = 0;
  KRIssueObject* last = nullptr;
};
