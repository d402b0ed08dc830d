#include "contacts/undo/KRUndoTurn.h"

#include <fcntl.h>
#include <unistd.h>

#include <string>

#include "platform/KRFile.h"
#include "platform/KRHostInfo.h"

KRUndoTurn::KRUndoTurn() {
  const KRString folder = KRHostInfo::dataFolder();
  if (folder.isNothing() || !KRFile::createFolders(folder, true)) return;
  // Beside the records: their folder is held for moments only.
  const std::string path = std::string(folder.view()) + "/undo.lock";
  if (const int made = open(path.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0600); made >= 0) close(made);
  if (KRResult<KRFileLock> lock = KRFileLock::hold(std::string_view(path))) held_ = *std::move(lock);
}
