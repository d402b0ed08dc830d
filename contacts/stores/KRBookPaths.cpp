#include "contacts/stores/KRBookPaths.h"

#include <errno.h>

#include <memory>
#include <string_view>

#include "contacts/stores/KRSQLiteLibrary.h"
#include "contacts/stores/KRVCardFileStore.h"
#include "contacts/stores/KRVCardFolderStore.h"
#include "contacts/vcard/KRVCardBook.h"
#include "platform/KRASCII.h"
#include "platform/KRFile.h"

namespace {

std::vector<KRBookSource> libraryAt(const KRString& place) {
  std::vector<KRBookSource> sources = KRSQLiteBookProvider(place).sources();
  if (!sources.empty()) return sources;
  const auto open = [place]() -> KRResult<KRRef<KRAddressBook>> {
    return KRError{KRErrorCode::NotFound, std::string(place.view()) + ": it holds no address books"};
  };
  return {{place, KRVCardBook::nameForFile(place), "sqlite"_kr, place, open}};
}

/// One book over the store of a file or folder, which must be there.
template <class Store>
KRBookSource sourceOf(const KRString& place) {
  const Store store(place);
  const auto open = [place]() -> KRResult<KRRef<KRAddressBook>> {
    const KRFile::Kind kind = KRFile::kind(place);
    if (kind == KRFile::Kind::Missing) return KRFile::systemError(ENOENT, "open", place);
    if (kind == KRFile::Kind::Other) return KRFile::systemError(EINVAL, "open", place);
    return KRRef<KRAddressBook>(krMake<KRStoredBook>(std::make_unique<Store>(place)));
  };
  return {store.ID(), store.name(), store.kind(), place, open};
}

}  // namespace

std::vector<KRBookSource> krBooksAtPath(KRText path) {
  const KRString place(path);
  if (krIsLibraryPath(place)) return libraryAt(place);
  if (KRFile::kind(place) == KRFile::Kind::Folder) return {sourceOf<KRVCardFolderStore>(place)};
  return {sourceOf<KRVCardFileStore>(place)};
}

bool krIsLibraryPath(KRText path) {
  if (KRSQLiteLibrary::isDatabase(path)) return true;
  constexpr std::string_view kEnd = ".sqlite";
  const std::string_view text = path.view();
  const bool isNamedSo =
      text.size() > kEnd.size() && krEqualsIgnoringCase(text.substr(text.size() - kEnd.size()), kEnd);
  return isNamedSo && KRFile::kind(path) == KRFile::Kind::Regular;
}
