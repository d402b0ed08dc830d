#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "contacts/undo/KRUndoRecords.h"
#include "platform/KRResult.h"
#include "platform/KRString.h"

/// Puts back what a run replaced, from its undo record (`KRUndoRecorder`): books, the trash, lists and preferences.
///
/// Everything is looked at before anything is written. What is neither as the run left it nor as it was before is not
/// touched, nor anything else of that run: `Changed`, and the sentence names it. What the run did not get to write,
/// because it was stopped, is as it should be.
///
/// Of a book of the desktop the cards that the run wrote are looked at, each by itself; the time of change that the
/// service gives every card with each change does not count. The service takes some hundred cards at a time: each such
/// step is done whole or not at all, and when one fails, those before it stay put back.
///
/// Books and a trash that are open in this process do not see it: a host reads them anew.
class KRUndo {
 public:
  /// Something that a run wrote.
  struct Target {
    /// "file", "folder", "sqlite", "desktop" or "preferences".
    KRString kind;
    /// A path, or what the book is called.
    KRString place;
    /// How many changes of files, rows, cards or preferences.
    size_t changes = 0;
    /// False when it was as before the run already.
    bool isPutBack = false;
  };

  /// What the run wrote, each place once, the last write first, and whether it would be put back; nothing is written.
  /// `Changed`, `Damaged` for a record that is damaged, and the errors of files and databases.
  static KRResult<std::vector<Target>> check(const KRUndoRecords::Run& run);
  /// The same, and puts it back: the last write first, each whole or not at all but for what is said above. When one
  /// fails, those before it stay put back, and another call does the rest. The record stays; when a recorder is open,
  /// it gets a record of its own with which this can be undone.
  static KRResult<std::vector<Target>> putBack(const KRUndoRecords::Run& run);
};
