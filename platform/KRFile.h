#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "platform/KRBuffer.h"
#include "platform/KRResult.h"
#include "platform/KRString.h"

/// Files as the library needs them: read whole, written whole or not at all. Thread-safe; no call changes the current
/// folder or the mask for new files.
///
/// A path is given to the system byte for byte, so a view of a path that is not UTF-8 works too. No path (nothing or
/// empty) and a path with a zero byte are `InvalidArgument`. A sentence of an error names the path.
class KRFile {
 public:
  enum class Kind : uint8_t {
    Missing,
    Regular,
    Folder,
    /// A pipe, a terminal, a device: readable once perhaps, and never replaced.
    Other,
  };

  /// What the path names; links are followed. Missing for nothing, and for what may not be looked at.
  static Kind kind(KRText path) noexcept;

  /// The whole content, copied into memory (never mapped, so that a file cut short by another program cannot stop this
  /// one). Pipes and devices are read to their end. `NotFound`, `IsFolder`, `NotAllowed`, `TooLarge` or `Failed`.
  static KRResult<KRBuffer> read(KRText path);

  /// Standard input to its end.
  static KRResult<KRBuffer> readStandardInput();

  struct WriteOptions {
    /// A new file is for its owner only (mode 0600), as befits what is kept about people; else the user's mask decides.
    bool isPrivate = false;
  };

  /// Puts the bytes where `path` is, or leaves what was there whole: a temporary file beside it, flush, rename, flush
  /// of the folder. A file that is replaced keeps its mode; a link stays a link, and the file that it leads to is
  /// replaced. Only the flush of the folder can fail after the rename; then what was there is put back, or, where the
  /// file system cannot change two files for one another, the new file stands and may be lost with the power. The
  /// folder must exist. `NotFound` (no folder), `IsFolder`, `NotAllowed`, `NoSpace` or `Failed`.
  static KRResult<void> write(KRText path, std::string_view bytes, const WriteOptions& options);
  static KRResult<void> write(KRText path, std::string_view bytes) { return write(path, bytes, WriteOptions()); }

  /// Makes the folder and those above it that are missing; new ones are for their owner only (mode 0700) when private.
  /// Success when it is there already. `NotFolder` when something on the way is not a folder.
  static KRResult<void> createFolders(KRText path, bool isPrivate = false);

  /// Gives a file another path, in the place of what is there, all at once; on another disk it is copied there, as
  /// `write` does. Nothing else is flushed. The errors of files.
  static KRResult<void> move(KRText path, KRText to);

  /// Removes a file; success when it is not there. Not a folder: `IsFolder`.
  static KRResult<void> remove(KRText path);

  /// Puts a file that must not be overwritten aside: beside itself, under its name with "." + `why` + "-" and the date
  /// and time in UTC at its end, and a number where there is such a name already. Answers the new path. A link is put
  /// aside itself, not what it leads to.
  static KRResult<KRString> setAside(KRText path, KRText why);

  /// Keeps what a file holds now at another path, where nothing may be: as a second name of the same file, which costs
  /// no room, or as a copy for its owner only where the file system gives no second name, and where the file has
  /// further names already: who writes into it by one of those would change what is kept. Whoever replaces the file
  /// afterwards, as `write` does, leaves what is kept alone. A link is followed.
  /// Not safe from a loss of power before the folder is flushed. `NotFound` and the other errors of files.
  static KRResult<void> keep(KRText path, KRText at);

  /// Makes sure that files which were moved into the folder or out of it stay so when the power fails.
  static KRResult<void> flushFolder(KRText path);

  /// The steps at which writing can fail, in their order, writing being repeated for every piece; and those of moving
  /// and removing.
  enum class Step : uint8_t { CreateTemporary, WritePiece, FlushTemporary, Rename, FlushFolder, Move, Remove };

  /// For tests of what keeps files: called before each step of every `write`, `move` and `remove` of this process; the
  /// step then fails with the system's error number that it returns, or is done when that is 0. Nothing ends this.
  static void setFault(std::function<int(Step)> fault);

  /// The error for one of the system's error numbers, for other sources of the platform that ask the system themselves:
  /// "cannot open /a/b: No such file or directory" for `doing` "open".
  static KRError systemError(int number, std::string_view doing, KRText path);
};
