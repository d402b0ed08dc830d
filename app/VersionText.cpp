#include "app/VersionText.h"

#include <cstdio>

#include "contacts/stores/KRDesktopBooks.h"
#include "platform/KRVersion.h"

namespace {

/// Whether the desktop's own address books can be listed.
const char* desktopText() {
  switch (KRDesktopBooks::support()) {
    case KRDesktopBooks::Support::NotBuilt:
      return "desktop address books: no, built without the plug-in";
    case KRDesktopBooks::Support::NotInstalled:
      return "desktop address books: no, the plug-in is not installed";
    case KRDesktopBooks::Support::Ready:
      break;
  }
  return "desktop address books: yes";
}

}  // namespace

std::string versionText() {
  char number[32];
  std::snprintf(number, sizeof number, "%.1f", KRAddressBookManagerSDKVersionNumber);
  return "krcontacts " + std::string(number) + "\n" + std::string(KRAddressBookManagerSDKVersionString.view()) + "\n" +
         desktopText() + "\n";
}
