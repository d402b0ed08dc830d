#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>

#include "platform/KRText.h"

/// Tells whether the file at a path is still the one that was read or written: a file that was replaced or changed has
/// another stamp. A change within a few milliseconds that keeps the size may not be seen.
struct KRFileStamp {
  dev_t device = 0;
  ino_t number = 0;
  off_t size = 0;
  /// When the content was changed last.
  int64_t seconds = 0;
  int64_t nanoseconds = 0;

  /// The stamp of what the path names, links followed; nothing when that is not there or may not be looked at.
  static std::optional<KRFileStamp> of(KRText path);

  friend bool operator==(const KRFileStamp&, const KRFileStamp&) = default;
};
