#pragma once

#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

#include "platform/KRFatal.h"

/// The progress callback of detectors and of fix-all: takes a percentage from 0 to 100, computed in single precision
/// and widened. It is called without a check for absence, on the thread that does the work; calling an absent one is a
/// programming error (`KRFatal`). Does not throw.
class KRProgress {
 public:
  KRProgress() = default;
  template <class Callback>
  requires(std::is_invocable_v<Callback&, double>) KRProgress(Callback callback) : callback_(std::move(callback)) {}

  void operator()(double percent) const {
    if (!callback_) KRFatal("a progress callback is required and was not given");
    callback_(percent);
  }

 private:
  std::function<void(double)> callback_;
};

/// The progress callback of handles and of the address book load: a finished flag (1 only on the last call, else 0) and
/// a percentage from 0 to 100. May be absent.
using KRFlagProgress = std::function<void(int flag, double percent)>;

/// position × 100 ÷ count in single precision, widened to double: the percentage that detectors report.
inline double krPercent(size_t position, size_t count) noexcept {
  return static_cast<double>(static_cast<float>(position) * 100.0F / static_cast<float>(count));
}
