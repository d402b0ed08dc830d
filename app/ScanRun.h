#pragma once

#include "app/Output.h"
#include "app/PersonFilter.h"
#include "app/ProgressBar.h"
#include "contacts/model/KRAddressBook.h"
#include "issues/KRIgnoredFindings.h"
#include "issues/KRIssueFindResult.h"
#include "platform/KRString.h"

/// The findings that are not to be shown, and how many of those that were found have been taken out.
struct HiddenFindings {
  KRIgnoredFindings ignored;
  size_t count = 0;
};

/// Runs the find control over a book, on the control's own thread, and waits for its end.
///
/// The find is always over the whole book, so that duplicates outside of what is narrowed are seen; the filter then
/// leaves those findings in which at least one matching contact stands, and the contexts that still have any. Of these
/// the ignored ones are taken out where they are given.
namespace ScanRun {

/// Shows the run's own percentages; the result.
KRRef<KRIssueFindResult> withProgress(const KRRef<KRAddressBook>& book, const PersonFilter& filter,
                                      ProgressBar& progress, HiddenFindings* hidden = nullptr);

/// Writes one JSON line for each call that the listener gets, in order; the last holds the document of the scan, for
/// which `scanned` names the issues that were looked for. The result.
KRRef<KRIssueFindResult> withEvents(const KRRef<KRAddressBook>& book, const KRStringList& scanned,
                                    const PersonFilter& filter, Output& out, HiddenFindings* hidden = nullptr);

}  // namespace ScanRun
