#pragma once

#include <time.h>

#include <algorithm>

/// The processor time of this process in seconds, so that what else the machine does does not count.
inline double krProcessorSeconds() {
  timespec time = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// The best of some runs: the time without what disturbed the others.
template <class Work>
double krBestSeconds(const Work& work) {
  double best = 1e9;
  for (int run = 0; run < 3; ++run) {
    const double start = krProcessorSeconds();
    work();
    best = std::min(best, krProcessorSeconds() - start);
  }
  return best;
}
