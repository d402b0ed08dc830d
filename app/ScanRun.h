#pragma once

#include "app/Output.h"
#include "app/ProgressBar.h"
#include "contacts/model/KRAddressBook.h"
#include "issues/KRIssueFindResult.h"
#include "platform/KRString.h"

/// Runs the find control over a book, on the control's own thread, and waits for its end.
namespace ScanRun {

/// Shows the run's own percentages; the result.
KRRef<KRIssueFindResult> withProgress(const KRRef<KRAddressBook>& book, ProgressBar& progress);

/// Writes one JSON line for each call that the listener gets, in order; the last holds the document of the scan, for
/// which `scanned` names the issues that were looked for. The result.
KRRef<KRIssueFindResult> withEvents(const KRRef<KRAddressBook>& book, const KRStringList& scanned, Output& out);

}  // namespace ScanRun
