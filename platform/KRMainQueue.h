#pragma once

#include <cstddef>
#include <functional>

/// Where the library puts calls that belong on the host's main thread, in the order in which they came.
///
/// A host with an event loop of its own sets a poster that hands each call to that loop. A host without one runs the
/// calls itself with `drain` or `waitAndDrain` on the thread that it regards as its main one. A host that does neither
/// never gets them. All operations are safe from any thread.
class KRMainQueue {
 public:
  using Job = std::function<void()>;
  using Poster = std::function<void(Job)>;

  /// The one queue of the process; made on first use, never destroyed.
  static KRMainQueue& shared();

  KRMainQueue(const KRMainQueue&) = delete;
  KRMainQueue& operator=(const KRMainQueue&) = delete;

  /// Puts a call at the end and returns; an empty one is ignored.
  void post(Job job);

  /// From now on every call goes to `poster`, those that wait at present first; the order is kept. The poster is called
  /// by one thread at a time, on whichever thread posts, and may run the call itself or post further ones. No poster
  /// lets calls wait for draining again.
  void setPoster(Poster poster);

  /// Runs the calls that wait now, on this thread, and returns how many. Calls that they post wait for the next time.
  size_t drain();

  /// Waits until a call is there, then does as `drain`. A host that waits for a certain event posts a call that notes
  /// it, and repeats this until it is noted.
  size_t waitAndDrain();

 private:
  KRMainQueue();
  struct State;
  State* const state_;
};
