#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <vector>

/// Runs the work in as many processes at once, each told its number from 0. The work says whether it is content; it
/// touches nothing that other threads of this process use.
inline void krRunInProcesses(int count, const std::function<bool(int number)>& work) {
  int start[2] = {};
  ASSERT_EQ(pipe(start), 0);
  std::vector<pid_t> children;
  for (int number = 0; number < count; ++number) {
    children.push_back(fork());
    ASSERT_GE(children.back(), 0);
    if (children.back() != 0) continue;
    close(start[1]);
    char byte = 0;
    // All begin when the last one is there: the end of the pipe says so.
    const bool isEnd = read(start[0], &byte, 1) == 0;
    _exit(isEnd && work(number) ? 0 : 1);
  }
  close(start[0]);
  close(start[1]);
  for (const pid_t child : children) {
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
}
