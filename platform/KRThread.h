#pragma once

#include <functional>

#include "platform/KRObject.h"

/// Runs `work` on a new thread of its own and returns at once. `keepAlive` (or nothing) lives until the work has ended
/// and is dropped last, on that thread. Nobody waits for the thread; what the work has to say goes to a listener.
///
/// False when the system gives no thread: then the work never runs. No work does nothing and answers true.
bool krDetach(KRRef<const KRObject> keepAlive, std::function<void()> work);
