#include "tests/support/KRBookMakers.h"

const std::vector<KRBookMaker>& krBookMakers() {
  static const auto& makers = *[] {
    auto* all = new std::vector<KRBookMaker>{krBookMaker(krStoreKinds().front())};
    all->front().rounds = 4;
    return all;
  }();
  return makers;
}
