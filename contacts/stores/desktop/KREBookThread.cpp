#include "contacts/stores/desktop/KREBookThread.h"

#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include "contacts/stores/desktop/KREBookFailure.h"

namespace {

/// How long a job may take to notice that it was cancelled.
constexpr std::chrono::milliseconds kGrace = std::chrono::seconds(3);

/// What the one who waits and the one who works both know of a job.
struct Task {
  KREBookThread::Job job;
  KRGObject<GCancellable> cancellable{g_cancellable_new()};
  std::mutex lock;
  std::condition_variable changed;
  bool isDone = false;
  KRDesktopFailure failure;

  void work() {
    KRDesktopFailure result = job(cancellable.get());
    // What the job owns is given up on this thread.
    job = nullptr;
    const std::lock_guard guard(lock);
    failure = std::move(result);
    isDone = true;
    changed.notify_all();
  }
  bool wait(std::chrono::milliseconds limit) {
    std::unique_lock guard(lock);
    return changed.wait_for(guard, limit, [this] { return isDone; });
  }
};

using Work = std::function<void()>;

gboolean doWork(gpointer work) {
  (*static_cast<Work*>(work))();
  return G_SOURCE_REMOVE;
}

void dropWork(gpointer work) {
  delete static_cast<Work*>(work);
}

}  // namespace

struct KREBookThread::Loop {
  GMainContext* const context = g_main_context_new();
  GMainLoop* const loop = g_main_loop_new(context, FALSE);

  Loop() = default;
  Loop(const Loop&) = delete;
  Loop& operator=(const Loop&) = delete;
  ~Loop() {
    g_main_loop_unref(loop);
    g_main_context_unref(context);
  }

  void run() {
    g_main_context_push_thread_default(context);
    g_main_loop_run(loop);
    g_main_context_pop_thread_default(context);
  }
  void post(Work work) {
    // Not g_main_context_invoke: it would do the work here while the other thread has not started yet.
    GSource* source = g_idle_source_new();
    g_source_set_priority(source, G_PRIORITY_DEFAULT);
    g_source_set_callback(source, doWork, new Work(std::move(work)), dropWork);
    g_source_attach(source, context);
    g_source_unref(source);
  }
};

KREBookThread::KREBookThread() : loop_(std::make_shared<Loop>()) {
  std::thread([loop = loop_] { loop->run(); }).detach();
}

KREBookThread::~KREBookThread() {
  loop_->post([loop = loop_->loop] { g_main_loop_quit(loop); });
}

void KREBookThread::post(std::function<void()> job) {
  loop_->post(std::move(job));
}

KRDesktopFailure KREBookThread::run(std::chrono::milliseconds limit, Job job) {
  if (isLost()) return krEBookSilence();
  const auto task = std::make_shared<Task>();
  task->job = std::move(job);
  loop_->post([task] { task->work(); });
  if (!task->wait(limit)) {
    g_cancellable_cancel(task->cancellable.get());
    if (!task->wait(kGrace)) {
      isLost_.store(true, std::memory_order_release);
      return krEBookSilence();
    }
  }
  const std::lock_guard guard(task->lock);
  return task->failure;
}
