#pragma once

#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>

/// Pieces of work that are done one after the other on a second thread while the first goes on. On a machine with one
/// processor, or where the system gives no thread, each is done when it is given: nothing is slower for it.
///
/// Used by one thread, which waits for the end of all work before it uses what that made.
class KRWorkAside {
 public:
  explicit KRWorkAside(unsigned processors = KRWorkAside::processors());
  /// Waits.
  ~KRWorkAside();
  KRWorkAside(const KRWorkAside&) = delete;
  KRWorkAside& operator=(const KRWorkAside&) = delete;

  /// How many processors the calling thread may use, at least 1: those that it was bound to, not all that there are.
  static unsigned processors() noexcept;

  /// Takes a piece of work. It is done after all that were given before.
  void add(std::function<void()> work);
  /// Waits until all work is done. Throws what the first of it threw on the other thread, such as `std::bad_alloc`; on
  /// this one `add` does.
  void wait();

 private:
  void start();
  void run();

  const bool hasSecond_;
  std::thread thread_;
  std::mutex lock_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> waiting_;
  bool isBusy_ = false;
  std::exception_ptr thrown_;
  bool isOver_ = false;
};
