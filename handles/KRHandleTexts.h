#pragma once

#include <span>

#include "platform/KRString.h"

class KRIssueObject;

/// The texts of a handle for the findings of one issue: `title` is the short text of the action, `resultInfo` the
/// sentence that explains what the fix will do.
struct KRHandleTexts {
  /// The issue's name; nothing in the last row, which serves every other issue.
  KRString issueName;
  KRString title;
  KRString resultInfo;
};

/// The row for the finding's issue: the first of its name, else the last row. `rows` is never empty.
const KRHandleTexts& krHandleTexts(std::span<const KRHandleTexts> rows, const KRIssueObject* issueObject);
