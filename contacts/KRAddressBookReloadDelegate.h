#pragma once

/// A listener that a host may give the address book manager. No operation of it is called by the library; a host gives
/// it operations of its own.
class KRAddressBookReloadDelegate {
 public:
  KRAddressBookReloadDelegate() = default;
  KRAddressBookReloadDelegate(const KRAddressBookReloadDelegate&) = delete;
  KRAddressBookReloadDelegate& operator=(const KRAddressBookReloadDelegate&) = delete;
  virtual ~KRAddressBookReloadDelegate() = default;
};
