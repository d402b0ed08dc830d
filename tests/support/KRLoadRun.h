#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "import/KRPersonLoad.h"

/// A listener that keeps all it hears, for tests that wait for the end of a run.
class KRLoadRun : public KRPersonLoadDelegate {
 public:
  /// Runs the loader to its end and returns what it said.
  static std::shared_ptr<KRLoadRun> of(KRPersonLoad& loader) {
    auto run = std::make_shared<KRLoadRun>();
    loader.setDelegate(run);
    loader.start();
    run->wait();
    loader.setDelegate(nullptr);
    return run;
  }

  void KRPersonLoadDelegate_start(KRPersonLoad&) override { events.emplace_back("start"); }
  void KRPersonLoadDelegate_allNumber(int64_t total, KRPersonLoad&) override {
    events.push_back("number " + std::to_string(total));
  }
  void KRPersonLoadDelegate_progress(double progress, const KRRef<IKRPerson>& person, KRPersonLoad& loader) override {
    progresses.push_back(progress);
    persons.push_back(person);
    if (onPerson) onPerson(loader);
  }
  void KRPersonLoadDelegate_end(KRPersonLoad& loader) override {
    const std::lock_guard lock(lock_);
    events.emplace_back("end");
    stateAtEnd = loader.state();
    isOver_ = true;
    over_.notify_all();
  }

  void wait() {
    std::unique_lock lock(lock_);
    over_.wait(lock, [&] { return isOver_; });
  }

  std::vector<std::string> events;
  std::vector<double> progresses;
  std::vector<KRRef<IKRPerson>> persons;
  std::function<void(KRPersonLoad&)> onPerson;
  int32_t stateAtEnd = -1;

 private:
  std::mutex lock_;
  std::condition_variable over_;
  bool isOver_ = false;
};
