#include "tests/support/KRBookMakers.h"

const std::vector<KRBookMaker>& krBookMakers() {
  static const auto& makers = *new std::vector<KRBookMaker>{krBookMaker(krStoreKinds().front())};
  return makers;
}
