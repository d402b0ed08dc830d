#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/KRFileLock.h"
#include "platform/KRResult.h"
#include "platform/KRString.h"

/// The undo records of this host, in the folder "undo" of its data folder. Thread-safe.
class KRUndoRecords {
 public:
  /// How many are kept besides the newest, how long, and how much all may hold; those beyond are removed when a run
  /// ends that added one.
  static constexpr size_t kMostRuns = 20;
  static constexpr int64_t kMostSeconds = int64_t{30} * 24 * 60 * 60;
  static constexpr uint64_t kMostBytes = uint64_t{1} << 30U;

  struct Run {
    /// From 1; later runs have larger ones.
    int64_t number = 0;
    /// What was run, in words.
    KRString title;
    /// When it began, in seconds since 1970 in UTC.
    int64_t time = 0;
    /// Whether the run put back what another one had done.
    bool isUndo = false;
    /// The record's folder.
    std::string folder;
    /// Why it cannot be put back: the file that is damaged, or that is missing. Its number and its folder are all that
    /// is known then. Nothing when it is well.
    KRString damage{};
    /// The numbers of its parts, in the order in which they were written; none for a run that wrote nothing (yet).
    std::vector<int64_t> parts;
    /// What the record holds. Files that are still in use elsewhere count too.
    uint64_t bytes = 0;

    /// The path of one of its files.
    std::string at(int64_t part, const std::string& ending) const;
  };

  /// Nothing when there is no data folder. Not made by asking.
  static KRString folder();
  /// All of them, also damaged ones, the newest first. No folder is no records.
  static KRResult<std::vector<Run>> all();
  /// A record, and what keeps other processes from putting it back or taking it away while it lives.
  struct Held {
    Run run;
    KRFileLock lock;
  };
  /// Makes the folder of a new record, with the next number, for a run that begins now.
  static KRResult<Held> begin(KRText title, bool isUndo);
  /// Puts the file into the record's folder that says what it is and which parts it has.
  static KRResult<void> write(const Run& run);
  /// Keeps others from putting the run back meanwhile; `Busy` while the run goes on or another one puts it back,
  /// `NotFound` when that has happened already. The answer tells of the run as it is now: one that went on when it was
  /// listed may have more parts since, or be damaged.
  static KRResult<Held> hold(const Run& run);
  /// Removes a record with all it holds; success when it is not there.
  static KRResult<void> remove(const Run& run);
  /// Removes what is beyond the limits. What cannot be removed stays: the next time tries again.
  static void prune(int64_t now);
};
