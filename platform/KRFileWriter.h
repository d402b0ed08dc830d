#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/KRFile.h"
#include "platform/KRResult.h"

class KRDescriptor;

/// Writes a file piece by piece into a temporary one in its folder, which takes the file's place in the end: nobody
/// ever sees half of it, and what was there stays whole until then. Ended without `commit`, it leaves nothing behind.
///
/// A process that is killed leaves its temporary file; `removeLeftovers` finds those. Moved, never copied; one thread
/// at a time.
class KRFileWriter {
 public:
  struct Options {
    /// A new file is for its owner only (mode 0600); else the user's mask decides.
    bool isPrivate = false;
    /// Whether `commit` makes sure that the file outlives a loss of power. Who writes many files at once leaves it to
    /// one `flushAll`.
    bool isFlushed = true;
  };

  /// Begins a file at `path`. One that is replaced keeps its mode; a link stays a link, and the file that it leads to
  /// is replaced. The folder must exist. `NotFound` (no folder), `IsFolder`, `NotAllowed`, `NoSpace` or `Failed`.
  static KRResult<KRFileWriter> open(KRText path, const Options& options);
  static KRResult<KRFileWriter> open(KRText path) { return open(path, Options()); }

  KRFileWriter(KRFileWriter&& other) noexcept;
  KRFileWriter& operator=(KRFileWriter&& other) = delete;
  KRFileWriter(const KRFileWriter&) = delete;
  ~KRFileWriter();

  /// Bytes behind those before. After a failure the file cannot be committed.
  KRResult<void> append(std::string_view bytes);
  /// Puts the file in its place. When the flush of the folder fails after that, what was there is put back; where the
  /// file system cannot change two files for one another, the new file stands then and may be lost with the power.
  KRResult<void> commit();

  /// Makes sure that all that was written into the folder, and everything else on its disk, outlives a loss of power.
  static KRResult<void> flushAll(KRText folder);
  /// Removes the temporary files beside the file at `path` whose writers are no more. Those of writers at work, of
  /// other users and of file systems where that cannot be told stay.
  static void removeLeftovers(KRText path);
  /// Success, or `NotAllowed` for a file that its owner, or the system, keeps from being written: replacing it would
  /// get round that. Success also for what is not there.
  static KRResult<void> mayReplace(KRText path);

 private:
  KRFileWriter(KRText path, std::string target, const Options& options);
  int openTemporary();
  int finish();
  void carry();
  int place();
  void takeBack() const;

  std::string path_;
  std::string target_;
  Options options_;
  std::string temporary_;
  /// What the target was before it was placed: nothing, or the file that is the temporary one since.
  enum class Before : uint8_t { Unknown, Missing, Kept } before_ = Before::Unknown;
  /// Null once it is closed.
  std::unique_ptr<KRDescriptor> descriptor_;
  int failed_ = 0;
  /// How many bytes were written, and how many of them the system was asked to carry to the disk.
  uint64_t written_ = 0;
  uint64_t carried_ = 0;
};
