#pragma once

#include "contacts/KRAccount.h"
#include "platform/KRList.h"

/// The user's online accounts: a list in memory that starts with three samples. Nothing is saved. The list is not
/// locked: one thread at a time.
class KRAccountManager : public KRObject {
 public:
  /// The manager of the process, made on the first call and never destroyed. Safe against concurrent first calls.
  static KRAccountManager* ShareAccountManager();

  /// The three sample accounts.
  KRAccountManager();

  /// The live list.
  KRList<KRAccount>& accountArrray() noexcept { return accountArrray_; }
  /// Appends a new account and answers it, borrowed (written form: `addAcountByUserName:password:type:`). The password
  /// is kept nowhere.
  KRAccount* addAcountByUserName(const KRString& userName, const KRString& password, KRRef<KRAcountType> type);
  size_t accountCount() const noexcept { return accountArrray_.count(); }
  /// The account at that place, or nothing (written form: `accountAtIndex:`). Borrowed.
  KRAccount* accountAtIndex(size_t index) const;
  /// Always nothing: no account has a book yet (written form: `accountByAddressBook:`).
  KRAccount* accountByAddressBook(const KRAddressBook* book) const;
  /// Removes the account if it is in the list (written form: `removeAccount:`).
  void removeAccount(const KRAccount* account);

 private:
  KRList<KRAccount> accountArrray_;
};
