#include "app/Interrupt.h"

#include <unistd.h>
#include <csignal>
#include <string_view>

#include "app/Output.h"
#include "app/Unusable.h"

namespace Interrupt {

std::atomic<bool> barIsDrawn{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may only use atomics without locks");

namespace {

// Runs inside whatever was interrupted: it may call only what is safe there, and never returns.
extern "C" void onInterrupt(int /*signal*/) {
  if (barIsDrawn.load(std::memory_order_relaxed)) writeAll(STDERR_FILENO, "\r\x1b[K");
  writeAll(STDERR_FILENO, "krcontacts: interrupted\n");
  ::_exit(ExitCode::Interrupted);
}

}  // namespace

void install() {
  struct sigaction action {};
  action.sa_handler = onInterrupt;
  sigemptyset(&action.sa_mask);
  ::sigaction(SIGINT, &action, nullptr);

  struct sigaction quiet {};
  quiet.sa_handler = SIG_DFL;
  sigemptyset(&quiet.sa_mask);
  ::sigaction(SIGPIPE, &quiet, nullptr);

  // A file that may grow no further is an error of the write, which is told and cleaned up after.
  struct sigaction ignored {};
  ignored.sa_handler = SIG_IGN;
  sigemptyset(&ignored.sa_mask);
  ::sigaction(SIGXFSZ, &ignored, nullptr);
}

}  // namespace Interrupt
