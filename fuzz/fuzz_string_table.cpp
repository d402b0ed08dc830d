// Any text is a string table, with mistakes perhaps.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/KRFatal.h"
#include "platform/KRStringTable.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const KRStringTable table = KRStringTable::parse({reinterpret_cast<const char*>(data), size});
  if (table.keys().size() != table.count()) KRFatal("a key is counted twice");
  for (const KRString& key : table.keys()) {
    const KRString text = table.find(key);
    if (text.isNothing()) KRFatal("a key is not found");
    if (!krIsWellFormed(text.view())) KRFatal("a text is not well-formed");
  }
  return 0;
}
