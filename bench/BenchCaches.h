#pragma once

#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <vector>

/// Fills the processor's caches with other things, as they are when a program turns to a large book: otherwise a small
/// book would be measured in the cache and a large one in memory, and comparing the two would tell of the processor
/// alone.
inline void krBenchEmptyCaches() {
  constexpr size_t kLeast = size_t{256} << 20U;  // where the system does not know
  constexpr size_t kLine = 64;
  static std::vector<char> others(
      std::max(kLeast, static_cast<size_t>(std::max(0L, ::sysconf(_SC_LEVEL3_CACHE_SIZE)))));
  for (size_t i = 0; i < others.size(); i += kLine)
    static_cast<volatile char&>(others[i]) = static_cast<char>(i / kLine);
}
