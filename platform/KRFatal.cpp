#include "platform/KRFatal.h"

#include <cstdio>
#include <cstdlib>

void KRFatal(const char* message) noexcept {
  std::fprintf(stderr, "KRAddressBookManagerSDK: fatal: %s\n", message);
  std::fflush(stderr);
  std::abort();
}
