#pragma once

#include "contacts/stores/KRAddressBookProvider.h"

/// The books at the paths that the user added: the provider of them, and the list itself, which is kept in a property
/// list of its own in the configuration folder, shared by all processes of the host.
///
/// Paths are absolute and kept as written; those that lead to one file or folder, through links or as several names of
/// it, are one. What is at them is looked at when the books are opened. Forgetting a path never touches what is there.
/// Thread-safe.
class KRAddedBooks : public KRAddressBookProvider {
 public:
  /// The list of this host: its identifier with ".books.plist" at its end.
  static KRString listPath();

  /// Whether the list can be read, or is not there yet. One that cannot counts as empty, and is put aside by the first
  /// change; a host tells its user. `Damaged` or the errors of files.
  static KRResult<void> check();

  /// The paths in the order in which they were added.
  static KRStringList paths();
  /// Adds a path at the end, made absolute from the current folder; whether it was not there yet under this
  /// name or another. The error says why
  /// the list could not be written; then nothing is added. No path is `InvalidArgument`.
  static KRResult<bool> add(KRText path);
  /// Forgets a path, or the one that leads to the same place; whether it was there.
  static KRResult<bool> remove(KRText path);

  /// Takes a book, of whichever provider, out of the user's list and leaves its data alone: the only book at an added
  /// path goes with its path, any other one is noted as hidden. Whether that changed anything.
  static KRResult<bool> hide(KRText ID);
  /// Lists a hidden book again; whether it was hidden.
  static KRResult<bool> show(KRText ID);
  /// The identifiers of the hidden books in the order in which they were hidden.
  static KRStringList hiddenIDs();

  std::vector<KRBookSource> sources() override;
};
