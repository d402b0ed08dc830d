#include "platform/KRSupportFuction.h"

#include "platform/KRLanguage.h"
#include "platform/KRResources.h"

KRString KRSupportFuction::loadString(const KRString& key) {
  const KRString asked = key.isNothing() ? "nil"_kr : key;
  KRString text = KRResources::strings(KRLanguage::current()).find(asked);
  return text.isNothing() ? asked : text;
}
