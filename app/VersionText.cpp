#include "app/VersionText.h"

#include <cstdio>

#include "platform/KRVersion.h"

std::string versionText() {
  char number[32];
  std::snprintf(number, sizeof number, "%.1f", KRAddressBookManagerSDKVersionNumber);
  return "krcontacts " + std::string(number) + "\n" + std::string(KRAddressBookManagerSDKVersionString.view()) + "\n";
}
