#include "tests/desktop/DesktopBooks.h"

namespace {

KRResult<KRRef<KRStoredBook>> openBook(const KRTestFolder& /*folder*/) {
  return krDesktopBook("Personal");
}

// The tests of one run share the service, and so its book.
void makeBook(const KRTestFolder& folder) {
  const auto book = openBook(folder);
  ASSERT_TRUE(book.isOk()) << book.error().sentence;
  for (const auto& group : (*book)->rootGroups()) (*book)->removeGroup(*group);
  (*book)->removePersons(KRPersonArray((*book)->allPersons().copy()));
  const auto saved = (*book)->saveNow();
  ASSERT_TRUE(saved.isOk()) << saved.error().sentence;
}

}  // namespace

const std::vector<KRStoreKind>& krStoreKinds() {
  static const auto* kinds =
      new std::vector<KRStoreKind>{{"desktop", makeBook, openBook, true, true, false, "On This Computer", true, false}};
  return *kinds;
}
