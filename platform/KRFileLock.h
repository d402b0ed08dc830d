#pragma once

#include <memory>

#include "platform/KRResult.h"
#include "platform/KRString.h"

class KRDescriptor;

/// Keeps other processes, and other holders in this one, from the same file or folder while one looks whether it is as
/// it was and then replaces it. It binds only those who ask for it: other programs write when they like.
class KRFileLock {
 public:
  /// Holds what is at the path, which must be there and readable; waits while another holds it. A file that was
  /// replaced while waiting is not what was waited for: the new one is held then. Where the file system has no locks,
  /// nothing is held, and that is no error. `NotFound`, `NotAllowed` or `Failed`.
  static KRResult<KRFileLock> hold(KRText path);

  /// The same without waiting: `Busy` while another holds it.
  static KRResult<KRFileLock> holdNow(KRText path);

  KRFileLock(KRFileLock&& other) noexcept;
  KRFileLock& operator=(KRFileLock&& other) noexcept;
  /// Lets go.
  ~KRFileLock();

  /// Whether the file system gave a lock.
  bool isHeld() const noexcept { return held_ != nullptr; }

 private:
  static KRResult<KRFileLock> hold(KRText path, bool waits);
  explicit KRFileLock(std::unique_ptr<KRDescriptor> held) noexcept;

  /// Null where there is no lock.
  std::unique_ptr<KRDescriptor> held_;
};
