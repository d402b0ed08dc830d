#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "contacts/stores/KRUndo.h"
#include "contacts/undo/KRUndoPart.h"

/// How things are, by what names them: a mark, or nothing for what is not there. Steps look at the disk once and then
/// say here what putting back would make of it, so that the writes of one run are seen through from the last to the
/// first.
using KRUndoStates = std::unordered_map<std::string, std::optional<uint64_t>>;

/// Putting back one write of a run.
class KRUndoStep {
 public:
  KRUndoStep() = default;
  KRUndoStep(const KRUndoStep&) = delete;
  KRUndoStep& operator=(const KRUndoStep&) = delete;
  virtual ~KRUndoStep() = default;

  /// The step for a part of a run's record; `Damaged` for one that no step understands.
  static KRResult<std::unique_ptr<KRUndoStep>> of(const KRUndoRecords::Run& run, int64_t part);

  /// What there is to put back; `Changed` when it is neither as before the write nor as after it.
  virtual KRResult<KRUndo::Target> check(KRUndoStates& states) = 0;
  /// Puts it back, after looking once more.
  virtual KRResult<void> putBack() = 0;
};
