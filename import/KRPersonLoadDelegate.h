#pragma once

#include <cstdint>

#include "contacts/model/IKRPerson.h"
#include "platform/KRObject.h"

class KRPersonLoad;

/// Listens to the loading of a file. Every operation is optional: a listener overrides what it wants to hear. They are
/// called on the run's own thread, one after the other, never on the host's main thread; a listener that shows
/// something moves the work there itself. They do not throw.
///
/// Each run has exactly one start and, after it, exactly one end, also when it was stopped or nothing could be read. A
/// loader that was stopped and started again may still be ending its former run on that run's thread.
class KRPersonLoadDelegate {
 public:
  virtual ~KRPersonLoadDelegate() = default;

  /// First thing in the run (written form: `KRPersonLoadDelegate_start:`).
  virtual void KRPersonLoadDelegate_start([[maybe_unused]] KRPersonLoad& loader) {}

  /// Once, when the total is known; not at all when there is nothing to read (written form:
  /// `KRPersonLoadDelegate_allNumber:loader:`). For vCards the total is one more than there are ends of cards.
  virtual void KRPersonLoadDelegate_allNumber([[maybe_unused]] int64_t total, [[maybe_unused]] KRPersonLoad& loader) {}

  /// Once for each person, with the percentage of the file that is done, from 0 to 100 (written form:
  /// `KRPersonLoadDelegate_progress:person:loader:`). The person belongs to no book; keeping it takes a reference.
  virtual void KRPersonLoadDelegate_progress([[maybe_unused]] double progress,
                                             [[maybe_unused]] const KRRef<IKRPerson>& person,
                                             [[maybe_unused]] KRPersonLoad& loader) {}

  /// Last thing in the run (written form: `KRPersonLoadDelegate_end:`).
  virtual void KRPersonLoadDelegate_end([[maybe_unused]] KRPersonLoad& loader) {}
};
