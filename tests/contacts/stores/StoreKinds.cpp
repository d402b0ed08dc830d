#include "tests/contacts/stores/StoreSamples.h"

#include <filesystem>
#include <memory>

#include "contacts/stores/KRSQLiteLibrary.h"
#include "contacts/stores/KRVCardFileStore.h"
#include "contacts/stores/KRVCardFolderStore.h"

namespace {

void makeLibrary(const KRTestFolder& folder) {
  const std::string path = folder.at("library.db");
  const auto library = KRSQLiteLibrary::open(krPath(path), KRSQLiteLibrary::Mode::Create);
  ASSERT_TRUE(library.isOk());
  ASSERT_TRUE((*library)->addBook("People").isOk());
}

KRResult<KRRef<KRStoredBook>> openLibrary(const KRTestFolder& folder) {
  const std::string path = folder.at("library.db");
  const auto library = KRSQLiteLibrary::open(krPath(path));
  if (!library) return library.error();
  const auto books = (*library)->books();
  if (!books) return books.error();
  return (*library)->book(books->front().ID);
}

std::string filePath(const KRTestFolder& folder) {
  return folder.at("people.vcf");
}

void makeFile(const KRTestFolder& folder) {
  folder.put("people.vcf", "");
}

KRResult<KRRef<KRStoredBook>> openFile(const KRTestFolder& folder) {
  const std::string path = filePath(folder);
  return krMake<KRStoredBook>(std::make_unique<KRVCardFileStore>(krPath(path)));
}

std::string folderPath(const KRTestFolder& folder) {
  return folder.at("people");
}

void makeFolder(const KRTestFolder& folder) {
  ASSERT_TRUE(std::filesystem::create_directory(folderPath(folder)));
}

KRResult<KRRef<KRStoredBook>> openFolder(const KRTestFolder& folder) {
  const std::string path = folderPath(folder);
  return krMake<KRStoredBook>(std::make_unique<KRVCardFolderStore>(krPath(path)));
}

}  // namespace

const std::vector<KRStoreKind>& krStoreKinds() {
  static const auto* kinds = new std::vector<KRStoreKind>{
      {"sqlite", makeLibrary, openLibrary, true, true},
      {"vcard", makeFile, openFile, false, true, true, nullptr, false},
      {"folder", makeFolder, openFolder, true, true, true, nullptr, false, false},
  };
  return *kinds;
}
