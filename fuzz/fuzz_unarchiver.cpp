// Any bytes as a keyed archive: what reads as one is archived and read again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "tests/support/KRArchivedNode.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto value =
      KRKeyedUnarchiver::unarchive({reinterpret_cast<const char*>(data), size}, KRArchivedNode::classes());
  if (!value) return 0;
  const std::string archive = KRKeyedArchiver::archivedData(*value);
  const auto again = KRKeyedUnarchiver::unarchive(archive, KRArchivedNode::classes());
  // What may be held grows with the file, so a smaller archive may hold less.
  if (!again && archive.size() >= size) std::abort();
  if (again && KRKeyedArchiver::archivedData(*again) != archive) std::abort();
  return 0;
}
