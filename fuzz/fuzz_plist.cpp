// Any bytes as a property list: what reads as one is written and read again, and must be the same.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/KRBinaryPlist.h"
#include "platform/KRPlistValue.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto plist = KRBinaryPlist::read({reinterpret_cast<const char*>(data), size});
  if (!plist) return 0;
  const std::string bytes = plist->write();
  const auto again = KRBinaryPlist::read(bytes);
  if (!again || again->write() != bytes) std::abort();
  const KRValue value = krValueOfPlist(*plist, plist->root());
  if (!value.isEqual(krValueOfPlist(*again, again->root()))) {
    // A number that is none equals nothing, itself included; everything else is the same twice.
    if (value.description() != krValueOfPlist(*again, again->root()).description()) std::abort();
  }
  return 0;
}
