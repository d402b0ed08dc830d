#include "handles/KRHandleTexts.h"

#include "handles/KRHandleFinding.h"

const KRHandleTexts& krHandleTexts(std::span<const KRHandleTexts> rows, const KRIssueObject* issueObject) {
  const KRString issueName = krIssueNameOf(issueObject);
  for (const KRHandleTexts& row : rows) {
    if (sameText(row.issueName, issueName)) return row;
  }
  return rows.back();
}
