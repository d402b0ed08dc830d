#include "platform/KRThread.h"

#include <memory>
#include <system_error>
#include <thread>
#include <utility>

bool krDetach(KRRef<const KRObject> keepAlive, std::function<void()> work) {
  if (!work) return true;
  try {
    std::thread([keepAlive = std::move(keepAlive), work = std::move(work)]() mutable {
      work();
      // What the work holds goes before the object that it works for.
      work = nullptr;
      keepAlive = nullptr;
    }).detach();
  } catch (const std::system_error&) {
    return false;
  }
  return true;
}
