#pragma once

#include "issues/KRIssueFindResult.h"
#include "platform/KRObject.h"

class KRIssueFindControl;

/// Listens to a find. Every operation is optional: a listener overrides what it wants to hear. They are called on the
/// run's own thread, one after the other, never on the host's main thread; a listener that shows something moves the
/// work there itself. They do not throw.
class KRIssueFindControlDelegate {
 public:
  virtual ~KRIssueFindControlDelegate() = default;

  /// Once, first thing in the run.
  virtual void KRIssueFindControlDelegate_FindStart([[maybe_unused]] KRIssueFindControl& findControl) {}

  /// During each detector's work and after each issue, with the percentage of the whole run (written form:
  /// `KRIssueFindControlDelegate_Finding:findControl:`). The last one is a little below 100 for many numbers of issues.
  virtual void KRIssueFindControlDelegate_Finding([[maybe_unused]] double progress,
                                                  [[maybe_unused]] KRIssueFindControl& findControl) {}

  /// Once, last thing in the run: the result belongs to the listener from now on (written form:
  /// `KRIssueFindControlDelegate_FindEnd:findControl:`).
  virtual void KRIssueFindControlDelegate_FindEnd([[maybe_unused]] const KRRef<KRIssueFindResult>& result,
                                                  [[maybe_unused]] KRIssueFindControl& findControl) {}
};
