#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "contacts/stores/KRDesktopService.h"
#include "platform/KRResult.h"
#include "platform/KRString.h"
#include "platform/KRText.h"

/// The plug-in that reaches the desktop's address book service. It is a module of its own, loaded when the first book
/// is asked for, so that a program needs the service's libraries only where there is a desktop.
///
/// It is looked for in the folder "plugins" beside the program, in the library folder that belongs to the program's
/// place, and where this library was to be installed. Thread-safe.
class KRDesktopModule {
 public:
  /// Whether this library was built together with the plug-in.
  static bool isBuilt() noexcept;
  /// The plug-in's file, or nothing. Loads nothing.
  static KRString path();
  /// Loads it with the first call and keeps it for good. `NotFound` when there is none, `Failed` when it cannot be
  /// loaded, as when one of its libraries is missing.
  static KRResult<KRDesktopService*> service();
  /// Whether the environment names a message bus of a desktop session, without which there is nothing to reach.
  static bool hasSessionBus();

  /// The identifier that this library gives the service's book of that identifier, in every process the same.
  static std::string bookID(const std::string& serviceID) { return std::string(kPrefix) + serviceID; }
  /// Opens the book that this library calls so. `NotFound` when there is no such book, no desktop session or no
  /// plug-in.
  static KRResult<std::unique_ptr<KRDesktopBook>> open(KRText bookID);

 private:
  static constexpr std::string_view kPrefix = "desktop:";
};
