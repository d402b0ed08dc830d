#pragma once

#include <functional>

#include "platform/KRText.h"

/// Writes one line into the system's log, as an error of this program. Nothing is written for nothing. Thread-safe.
///
/// The library writes there only what the contract tells it to; everything else that goes wrong is handed to the
/// caller.
void krLog(KRText line);

/// Sends the lines elsewhere from now on, for a host with a log of its own and for tests; nothing goes back to the
/// system's log. Called on whatever thread has something to write, one line at a time; must not write itself.
void krSetLog(std::function<void(KRText)> log);
