#pragma once

/// Stops the process with one line on standard error, then abort().
///
/// For what the contract calls a fatal or programming error: an index out of range, a list changed under a walk, a
/// callback that is required and missing. Nothing else in the library stops the process, whatever the input.
[[noreturn]] void KRFatal(const char* message) noexcept;
