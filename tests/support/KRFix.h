#pragma once

#include <utility>
#include <vector>

#include "contacts/model/KRAddressBook.h"
#include "handles/KRIssueHandle.h"
#include "issues/KRIssue.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueFindResult.h"
#include "issues/KRIssueObject.h"
#include "tests/support/KRPersonSketch.h"

/// A find result with one finding of an issue about one person, and the fixing of it.
class KRFix {
 public:
  KRFix(const KRString& issueName, KRRef<IKRPerson> person) : person_(std::move(person)) {
    result_->setAddressBook(krMake<KRAddressBook>("book"_kr, "Book"_kr));
    const auto context = krMake<KRIssueContext>(krMake<KRIssue>(issueName, "what this test is about"_kr));
    finding_->setPersons(KRPersonArray(person_));
    context->addIssueObject(finding_.get());
    result_->addContext(context.get());
  }

  KRIssueObject* finding() const { return finding_.get(); }
  IKRPerson& person() const { return *person_; }

  /// Whether the finding stands in no context and under no person any more.
  bool isGone() const {
    return result_->contexts().isEmpty() && result_->issueObjectsOfPerson(person_.get()) == nullptr;
  }

  /// The person's name value, or nothing.
  KRRef<KRObjectPersonName> name() const {
    const auto value = person_->valueByPropertyName(KRProPertyName);
    const auto* single = dynamic_cast<const KRMutableSingleValue*>(value.get());
    return KRRef<KRObjectPersonName>(single != nullptr ? single->value().as<KRObjectPersonName>() : nullptr);
  }

 private:
  KRRef<IKRPerson> person_;
  KRRef<KRIssueFindResult> result_ = krMake<KRIssueFindResult>();
  KRRef<KRIssueObject> finding_ = krMake<KRIssueObject>();
};

/// Expects that the handle reports its fix once as done, while the finding still stands in the result, and takes the
/// finding out of the result; and that without a callback it does the same.
template <class Handle>
void krExpectReportedOnce(const KRString& issueName, const KRRef<IKRPerson>& person) {
  const auto handle = krMake<Handle>();
  const KRFix fix(issueName, person);
  std::vector<std::pair<int, double>> reports;
  handle->fix(fix.finding(), [&](int flag, double percent) {
    EXPECT_FALSE(fix.isGone());
    reports.emplace_back(flag, percent);
  });
  EXPECT_EQ(reports, (std::vector<std::pair<int, double>>{{1, 100.0}}));
  EXPECT_TRUE(fix.isGone());
  const KRFix quiet(issueName, person);
  handle->fix(quiet.finding());
  EXPECT_TRUE(quiet.isGone());
}

/// A handle's texts for findings of one issue.
struct KRExpectedTexts {
  KRString issueName;
  const char* title;
  const char* resultInfo;
};

template <class Handle>
void krExpectTexts(const std::vector<KRExpectedTexts>& rows) {
  const auto handle = krMake<Handle>();
  for (const KRExpectedTexts& row : rows) {
    const KRFix fix(row.issueName, krPerson<KRHostPerson>({}));
    EXPECT_EQ(handle->title(fix.finding()), row.title) << row.issueName.view();
    EXPECT_EQ(handle->resultInfo(fix.finding()), row.resultInfo) << row.issueName.view();
  }
}
