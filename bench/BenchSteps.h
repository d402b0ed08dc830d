#pragma once

#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>

#include "contacts/vcard/KRVCardBook.h"
#include "handles/KRIssueHandle.h"
#include "issues/KRIssue.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueFindResult.h"
#include "issues/KRIssueObject.h"

// What the programs that measure one step a process have in common.

[[noreturn]] inline void krBenchFail(const std::string& sentence) {
  std::cerr << "measuring: " << sentence << '\n';
  std::exit(2);
}

inline KRRef<KRVCardBook> krBenchOpen(const std::string& path) {
  auto book = KRVCardBook::open(std::string_view(path));
  if (!book) krBenchFail(book.error().sentence);
  return book.value();
}

/// Sets a handle of that name on all findings of an issue, or of all issues when it is nothing, and fixes them; how
/// many there were.
inline size_t krBenchFixAll(KRIssueFindResult& result, const KRString& issueName, const KRString& handleName) {
  const auto handle = KRIssueHandle::issueHandleWithName(handleName);
  size_t count = 0;
  for (const KRRef<KRIssueContext>& context : result.contexts().copy()) {
    if (!issueName.isNothing() && context->issue()->name() != issueName) continue;
    count += context->objects().count();
    for (KRIssueObject& finding : context->objects()) finding.setHandle(handle);
    context->fixAllForProgress([](double) {});
  }
  return count;
}
