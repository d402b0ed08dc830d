#pragma once

#include <functional>
#include <vector>

#include "contacts/model/KRAddressBook.h"
#include "platform/KRResult.h"
#include "platform/KRString.h"

/// A book that can be opened, and what can be said of it before.
struct KRBookSource {
  /// What the opened book will answer as `ID`, `name`, `kind` and `place`; said of it too when it cannot be opened.
  KRString ID;
  KRString name;
  KRString kind;
  KRString place;
  /// Opens the book, or tells why not. It reads no contacts yet where the store can do without: a list of books needs
  /// only names and counts.
  std::function<KRResult<KRRef<KRAddressBook>>()> open;
};

/// Knows of some of the user's address books: those of the library file, those of the desktop, those at paths that the
/// user added. Providers are registered with `KRMacAddressBook`, which lists what all of them know of.
class KRAddressBookProvider {
 public:
  KRAddressBookProvider() = default;
  KRAddressBookProvider(const KRAddressBookProvider&) = delete;
  KRAddressBookProvider& operator=(const KRAddressBookProvider&) = delete;
  virtual ~KRAddressBookProvider() = default;

  /// The books there are now, in the order in which they are shown. Where even that cannot be found out, one source
  /// stands for all, and opening it tells why. Called on any thread, by one at a time.
  virtual std::vector<KRBookSource> sources() = 0;
};
