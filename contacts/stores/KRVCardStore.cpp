#include "contacts/stores/KRVCardStore.h"

#include "contacts/vcard/KRVCardBook.h"

KRString KRVCardStore::ID() const {
  return KRVCardBook::IDForFile(path_);
}

KRString KRVCardStore::name() const {
  return KRVCardBook::nameForFile(path_);
}
