#pragma once

#include <cstdint>
#include <string>

#include "platform/KRResult.h"

/// What to tell of a save that failed: `nothing` ("nothing is fixed") with the cause, or, when something that was
/// written since the run had taken note of so many writes (`KRUndoRecorder::count`) could not be taken back, that and
/// what to do.
std::string notSaved(const std::string& nothing, int64_t writes, const KRError& cause);
