#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

#include "contacts/stores/KRDesktopService.h"
#include "contacts/stores/desktop/KREBook.h"

/// The thread on which everything of libebook happens, so that nobody has to wait for it longer than he wants: its
/// objects deliver what they are told to the thread that made them, and the service may hang.
///
/// It ends with its last owner. One that does not come back from a job is left alone with it: it is lost, and its jobs
/// fail from then on.
class KREBookThread {
 public:
  /// Does something with libebook. Owns all that it touches, as it may still run when nobody waits for it any more; it
  /// stops early when the cancellable is cancelled.
  using Job = std::function<KRDesktopFailure(GCancellable*)>;

  KREBookThread();
  ~KREBookThread();
  KREBookThread(const KREBookThread&) = delete;
  KREBookThread& operator=(const KREBookThread&) = delete;

  /// Does the job there and waits for it, at most for `limit` and a little while after it was cancelled. What the job
  /// has made may be looked at only when this was not `lost` by then.
  KRDesktopFailure run(std::chrono::milliseconds limit, Job job);
  /// Whether a job never came back.
  bool isLost() const noexcept { return isLost_.load(std::memory_order_acquire); }
  /// Does the job there some time; nobody waits. For giving up objects that live there.
  void post(std::function<void()> job);

 private:
  struct Loop;

  const std::shared_ptr<Loop> loop_;
  std::atomic<bool> isLost_{false};
};
