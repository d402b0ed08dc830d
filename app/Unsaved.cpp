#include "app/Unsaved.h"

#include "contacts/undo/KRUndoRecorder.h"

std::string notSaved(const std::string& nothing, int64_t writes, const KRError& cause) {
  if (!KRUndoRecorder::hasChangedSince(writes)) return nothing + ": " + cause.sentence;
  return "it is done in part only: " + cause.sentence + "; \"krcontacts undo\" takes back what is done";
}
