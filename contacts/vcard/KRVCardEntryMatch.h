#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

/// For each of `newCount` entries the old one that it goes on, or nothing; in order, so that no two cross. `isSame(old,
/// new, stage)` tells how alike they are: stage 0 the same entry, stage 1 the same value. What is left between those is
/// paired in order, as an entry that was changed.
std::vector<std::optional<size_t>> krMatchEntries(size_t oldCount, size_t newCount,
                                                  const std::function<bool(size_t, size_t, int)>& isSame);
