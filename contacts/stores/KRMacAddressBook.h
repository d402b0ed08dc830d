#pragma once

#include <memory>
#include <vector>

#include "contacts/stores/KRAddressBookProvider.h"
#include "platform/KRProgress.h"

/// Lists all address books of the user: those that the registered providers know of, in the order of registration.
///
/// Opening a book reads no contacts where its store can do without; they are read when they are first asked for. A book
/// that cannot be opened stands in the list as a `KRUnavailableBook`, and the others are opened all the same. Of
/// sources with the same identifier, as when a path was added that another provider lists too, the first counts. Books
/// that the user took out of the list (`KRAddedBooks::hide`) are left out.
///
/// Safe from any thread; the progress callback is called on the caller's thread, from 0 up to 100, and must be there.
class KRMacAddressBook {
 public:
  using Books = std::vector<KRRef<KRAddressBook>>;

  /// Opens all books (written form: `addressBookArrayWithProgressBlock:`). New books on every call.
  static Books addressBookArrayWithProgressBlock(const KRProgress& progress);
  /// Drops the shared list and opens all books for it anew, after a change from outside (written form:
  /// `resetGAddressArray:`).
  static void resetGAddressArray(const KRProgress& progress);
  /// The list that `resetGAddressArray` made last; empty before.
  static Books addressBookArray();

  /// The file that holds the user's own books, an SQLite library in the host's data folder. Not made by asking. Nothing
  /// when there is no such folder.
  static KRString libraryPath();

  /// Registers a provider behind the others; nothing is ignored. At first there are three: the books of the library,
  /// those of the desktop (`KRDesktopBooks`), and those at the paths that the user added.
  static void addProvider(std::shared_ptr<KRAddressBookProvider> provider);
  /// Puts other providers in the place of all, as tests and hosts with books of their own do, and answers the former
  /// ones.
  static std::vector<std::shared_ptr<KRAddressBookProvider>> setProviders(
      std::vector<std::shared_ptr<KRAddressBookProvider>> providers);
};
