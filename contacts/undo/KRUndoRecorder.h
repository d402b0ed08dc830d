#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "contacts/undo/KRUndoFields.h"
#include "contacts/undo/KRUndoRecords.h"
#include "platform/KRBuffer.h"
#include "platform/KRFileStamp.h"
#include "platform/KRResult.h"

class KRUndoRecorder;

/// What a write makes of one thing: marks of its content, nothing where it is not there.
struct KRUndoChange {
  /// Names the thing among all others, whichever kind of part it is written in.
  std::string what;
  std::optional<uint64_t> before;
  std::optional<uint64_t> after;
};

/// One write that is about to happen, as the open recorder took note of it; none when no recorder is open. Whoever
/// writes says `keep` once what was written stands. Without that the note goes with this object, unless the files that
/// it is about are other ones by then.
class [[nodiscard]] KRUndoNote {
 public:
  KRUndoNote() = default;
  KRUndoNote(KRUndoNote&& other) noexcept;
  KRUndoNote& operator=(KRUndoNote&& other) = delete;
  ~KRUndoNote();

  void keep() noexcept { recorder_ = nullptr; }
  /// Says that everything was taken back: the note goes now.
  void drop();
  /// Says better what was written, for whoever learns that only afterwards, and keeps it. When that fails, what was
  /// noted before stands, and `KRUndoRecorder::failure` tells.
  void keep(KRText kind, const std::string& fields, std::vector<KRUndoChange> changes);

 private:
  friend class KRUndoRecorder;
  struct Watched {
    std::string path;
    std::optional<KRFileStamp> stamp;
  };

  KRUndoRecorder* recorder_ = nullptr;
  int64_t part_ = 0;
  std::vector<Watched> files_;
};

/// Keeps an undo record of everything of the user's that is written while it is open: books, the trash, the lists and
/// preferences. A host opens one for a run, before the run writes anything; it ends with the object. A run that writes
/// nothing leaves no record, nor does one that leaves everything as it found it, as one that failed and took back what
/// it had written.
///
///     const KRUndoRecorder recorder("import phone.vcf --into Family");
///
/// One is open at a time; one that is opened while another is does nothing, and what is written belongs to the outer.
/// Stores call `recordFile` and its sisters, from any thread; without an open recorder these do nothing. Their failure
/// means that the write could not be undone, and then nothing may be written.
class KRUndoRecorder {
 public:
  explicit KRUndoRecorder(KRText title);
  /// Takes an empty record away, and those beyond the limits of `KRUndoRecords`.
  ~KRUndoRecorder();
  KRUndoRecorder(const KRUndoRecorder&) = delete;
  KRUndoRecorder& operator=(const KRUndoRecorder&) = delete;

  /// Whether something that is written now is taken note of.
  static bool isOpen() noexcept;
  /// Gives the run that is being recorded another title, before it writes: that of the run which it puts back, or does
  /// again.
  static void setTitle(KRText title, bool isUndo);
  /// How many writes the run has taken note of so far, for `hasChangedSince`; 0 when none is open.
  static int64_t count();
  /// Whether anything is other than it was after so many writes: what has been written since and was not taken back.
  static bool hasChangedSince(int64_t count);
  /// What a file held when the run had taken note of so many writes; `NotFound` when there was none, or the run did not
  /// write it since.
  static KRResult<KRBuffer> contentBefore(KRText path, int64_t count);
  /// Why something that was written meanwhile could not be taken note of, or not well enough; nothing when all was.
  static KRString failure();

  /// While it lives, what is written is not taken note of: what a program mends of itself is no doing of its user's.
  /// One thread at a time.
  class Pause {
   public:
    Pause();
    ~Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;

   private:
    KRUndoRecorder* paused_;
  };

  /// What is to become of a file.
  struct File {
    std::string path;
    /// What it holds, and what it is to hold; nothing for no file.
    std::optional<std::string_view> before;
    std::optional<std::string_view> after;
  };

  /// A file that is to be replaced by these bytes. `lockedAt` is what its writers hold (`KRFileLock`), the file itself
  /// unless told.
  static KRResult<KRUndoNote> recordFile(KRText path, std::string_view after, KRText lockedAt = {});
  /// A file that is to be removed, else the same.
  static KRResult<KRUndoNote> recordRemoval(KRText path, KRText lockedAt = {});
  /// Files of a folder that are to be replaced, made or removed.
  static KRResult<KRUndoNote> recordFiles(KRText folder, const std::vector<File>& files);
  /// Any other write; the fields are what the one of that kind who puts it back understands, `changes` is everything
  /// that it changes.
  static KRResult<KRUndoNote> record(KRText kind, const std::string& fields, std::vector<KRUndoChange> changes);

 private:
  friend class KRUndoNote;

  KRResult<KRUndoNote> add(KRText kind, const std::string& fields, const std::vector<std::string>& kept,
                           std::vector<KRUndoChange> changes);
  KRResult<void> writePart(KRText kind, const std::string& fields, const std::vector<std::string>& kept);
  KRResult<KRUndoNote> addFile(KRText path, std::optional<std::string_view> after, KRText lockedAt);
  KRResult<KRUndoNote> addFiles(KRText folder, KRText lockedAt, const std::vector<File>& files);
  void rewrite(int64_t part, KRText kind, const std::string& fields, std::vector<KRUndoChange> changes);
  bool isAsAfter(int64_t count) const;
  KRResult<void> writeRun();
  void takeBack(int64_t part);
  void observePreferences();

  std::mutex lock_;
  KRString title_;
  bool isUndo_ = false;
  /// Made with the first part.
  std::optional<KRUndoRecords::Held> begun_;
  int64_t parts_ = 0;
  /// What the parts change that are kept.
  std::map<int64_t, std::vector<KRUndoChange>> kept_;
  KRString failure_;
};
