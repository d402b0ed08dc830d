#include "contacts/KRAccount.h"

bool KRAccount::valid() const {
  return !(userName() == "wangwu");
}

void KRAccount::connect() {}
