#pragma once

#include <signal.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <functional>
#include <optional>

#include "platform/KRFile.h"

/// Runs `prepare` and then `work` in a process of their own, stops it before or behind the given system call of `work`,
/// counted from 0 and twice each, and kills it there. How many stops there were when it ended before that; nothing when
/// it was killed. The work touches nothing that other threads of this process use.
inline std::optional<size_t> krKillAtSystemCall(size_t stop, const std::function<void()>& prepare,
                                                const std::function<void()>& work) {
  const pid_t child = fork();
  if (child == 0) {
    prepare();
    ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    raise(SIGSTOP);
    work();
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  // It does not outlive this process either.
  ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_EXITKILL);
  for (size_t passed = 0; WIFSTOPPED(status); ++passed) {
    if (passed == stop) {
      kill(child, SIGKILL);
      waitpid(child, &status, 0);
      return std::nullopt;
    }
    ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
    waitpid(child, &status, 0);
    if (!WIFSTOPPED(status)) return passed;
  }
  return 0;
}

/// Runs the work in a process of its own that dies when the first file that it writes is to get its name. Whether it
/// came so far.
inline bool krDieBeforeRename(const std::function<void()>& work) {
  const pid_t child = fork();
  if (child == 0) {
    KRFile::setFault([](KRFile::Step step) {
      if (step == KRFile::Step::Rename) _exit(7);
      return 0;
    });
    work();
    _exit(0);
  }
  int status = 0;
  return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 7;
}
