#pragma once

#include <utility>

#include "contacts/KRAcountType.h"
#include "contacts/model/KRAddressBook.h"
#include "platform/KRAtomic.h"

/// An online account of the user, in memory only; nothing connects to any service. Every field is atomic, nothing until
/// it is set, and compared by identity.
class KRAccount : public KRObject {
 public:
  KRRef<KRAcountType> accountType() const { return accountType_.get(); }
  void setAccountType(KRRef<KRAcountType> type) { accountType_.set(std::move(type)); }
  /// Always nothing: no account has a book yet.
  KRRef<KRAddressBook> addressBook() const { return addressBook_.get(); }
  KRString userName() const { return userName_.get(); }
  void setUserName(KRString userName) { userName_.set(std::move(userName)); }
  /// Details of a connection, in any form.
  KRValue connectInfo() const { return connectInfo_.get(); }
  void setConnectInfo(KRValue connectInfo) { connectInfo_.set(std::move(connectInfo)); }
  KRString displayName() const { return displayName_.get(); }
  void setDisplayName(KRString displayName) { displayName_.set(std::move(displayName)); }

  /// False for the user name "wangwu" and for no other, not even for none: the sample account of that name stands for
  /// one that does not work. Kept on purpose.
  bool valid() const;
  /// Does nothing.
  void connect();

 private:
  KRAtomic<KRRef<KRAcountType>> accountType_;
  KRAtomic<KRRef<KRAddressBook>> addressBook_;
  KRAtomic<KRString> userName_;
  KRAtomic<KRValue> connectInfo_;
  KRAtomic<KRString> displayName_;
};
