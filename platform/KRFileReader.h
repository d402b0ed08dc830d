#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/KRResult.h"
#include "platform/KRText.h"

/// Reads a file, or standard input, piece by piece, for those that need not have it in memory whole. Moved, never
/// copied; one thread at a time.
class KRFileReader {
 public:
  /// A path is given to the system byte for byte. No path is `InvalidArgument`, a folder `IsFolder`; else `NotFound`,
  /// `NotAllowed` or `Failed`. The sentence names the path.
  static KRResult<KRFileReader> open(KRText path);
  static KRFileReader standardInput() noexcept { return KRFileReader(0, false); }

  KRFileReader(KRFileReader&& other) noexcept;
  KRFileReader& operator=(KRFileReader other) noexcept;
  KRFileReader(const KRFileReader&) = delete;
  ~KRFileReader();

  /// Fills up to `size` bytes at `bytes`; fewer only at the end of the file, where it is 0 in the end. What went wrong
  /// is told without a path.
  KRResult<size_t> read(char* bytes, size_t size);

 private:
  KRFileReader(int number, bool isOwned) noexcept : number_(number), isOwned_(isOwned) {}

  int number_ = -1;
  bool isOwned_ = false;
};
