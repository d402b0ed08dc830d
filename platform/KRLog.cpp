#include "platform/KRLog.h"

#include <syslog.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <mutex>
#include <utility>

namespace {

struct Log {
  std::mutex lock;
  std::function<void(KRText)> write;
};

Log& log() {
  static auto* const only = new Log;
  return *only;
}

}  // namespace

void krLog(KRText line) {
  if (line.isNothing()) return;
  Log& target = log();
  const std::lock_guard lock(target.lock);
  if (target.write) {
    target.write(line);
    return;
  }
  const size_t longest = std::numeric_limits<int>::max();
  syslog(LOG_USER | LOG_ERR, "%.*s", static_cast<int>(std::min(line.size(), longest)), line.data());
}

void krSetLog(std::function<void(KRText)> write) {
  Log& target = log();
  const std::lock_guard lock(target.lock);
  target.write = std::move(write);
}
