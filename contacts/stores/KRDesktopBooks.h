#pragma once

#include <chrono>

#include "contacts/stores/KRAddressBookProvider.h"

/// The provider of the desktop's own address books (evolution-data-server): all that the user's desktop lists and has
/// switched on.
///
/// It needs the plug-in that is built where the desktop's development package is, and a desktop session. Where either
/// is missing, or the desktop has no such service, there are no books and nothing is said. A service that is there but
/// does not answer stands in the list as one book that cannot be opened, with the reason; no call waits longer for it
/// than the time limit.
class KRDesktopBooks : public KRAddressBookProvider {
 public:
  enum class Support {
    /// This library was built without the plug-in.
    NotBuilt,
    /// The plug-in is not where it is looked for.
    NotInstalled,
    /// The plug-in is there; whether there is a desktop shows when its books are asked for.
    Ready,
  };
  /// Whether desktop books can be listed at all. Loads nothing and asks nobody; any thread.
  static Support support();

  /// How long one question to the service may take, half a minute at first; reading and writing many contacts may take
  /// longer. Any thread; `Failed` or `NotFound` when there is no plug-in to tell it to.
  static KRResult<void> setTimeLimit(std::chrono::milliseconds limit);

  std::vector<KRBookSource> sources() override;
};
