#include "contacts/KRAccountManager.h"

#include <utility>

KRAccountManager* KRAccountManager::ShareAccountManager() {
  static auto* const manager = krMake<KRAccountManager>().detach();
  return manager;
}

KRAccountManager::KRAccountManager() {
  struct Sample {
    KRString userName;
    KRString type;
  };
  for (const Sample& sample : {Sample{"zhangsan"_kr, KRAccountTypeGoogle}, Sample{"lisi"_kr, KRAccountTypeFacebook},
                               Sample{"wangwu"_kr, KRAccountTypeGoogle}}) {
    addAcountByUserName(sample.userName, ""_kr, KRRef<KRAcountType>(KRAcountType::typeWithName(sample.type)));
  }
}

KRAccount* KRAccountManager::addAcountByUserName(const KRString& userName, const KRString&, KRRef<KRAcountType> type) {
  const auto account = krMake<KRAccount>();
  account->setUserName(userName);
  account->setAccountType(std::move(type));
  accountArrray_.append(account);
  return account.get();
}

KRAccount* KRAccountManager::accountAtIndex(size_t index) const {
  return index < accountArrray_.count() ? accountArrray_.at(index) : nullptr;
}

KRAccount* KRAccountManager::accountByAddressBook(const KRAddressBook*) const {
  return nullptr;
}

void KRAccountManager::removeAccount(const KRAccount* account) {
  if (account != nullptr) accountArrray_.remove(account);
}
