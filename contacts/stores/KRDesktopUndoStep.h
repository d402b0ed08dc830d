#pragma once

#include <memory>

#include "contacts/stores/KRUndoCards.h"
#include "contacts/stores/KRUndoSteps.h"

/// Putting back what was done to cards of a book of the desktop, through the service. Each card is judged by itself:
/// other cards of the book may have changed. The service takes cards some at a time, so one that fails halfway has put
/// some back; those count as put back the next time.
std::unique_ptr<KRUndoStep> krDesktopUndoStep(const KRUndoRecords::Run& run, int64_t part, KRUndoCards done);
