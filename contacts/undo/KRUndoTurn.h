#pragma once

#include <optional>

#include "platform/KRFileLock.h"

/// The turn of this process to write what belongs together: a run's trash and books, or what an undo puts back. While
/// it lives, other processes that take one wait, so that the writes of two runs never lie between one another, where
/// neither run could be undone: the last one always can.
///
/// Not to be taken twice at once by one process. Where no lock can be had, as without a data folder, nothing is held.
class KRUndoTurn {
 public:
  /// Waits while another process has its turn.
  KRUndoTurn();

 private:
  std::optional<KRFileLock> held_;
};
