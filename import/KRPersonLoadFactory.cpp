#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string>

#include "import/KRPersonCSVLoad.h"
#include "import/KRPersonLoad.h"
#include "platform/KRCaseFolding.h"

namespace {

template <class Loader>
KRRef<KRPersonLoad> make(const KRString& path) {
  return Loader::initWithFile(path);
}

struct Row {
  KRString extension;
  KRRef<KRPersonLoad> (*make)(const KRString& path);
};

// Every extension that there is a loader for.
constexpr Row kRows[] = {
    {"vcf"_kr, make<KRPersonLoad>},
    {"vcard"_kr, make<KRPersonLoad>},
    {"csv"_kr, make<KRPersonCSVLoad>},
};

/// The row of the path's extension, or null.
const Row* rowFor(const KRString& path) {
  std::string_view text = path.view();
  while (text.ends_with('/')) text.remove_suffix(1);
  std::string extension = std::filesystem::path(text).extension().string();
  if (extension.empty()) return nullptr;
  extension.erase(0, 1);
  const KRString lowered = krLower(KRText(std::string_view(extension)));
  const Row* row =
      std::find_if(std::begin(kRows), std::end(kRows), [&](const Row& each) { return each.extension == lowered; });
  return row == std::end(kRows) ? nullptr : row;
}

}  // namespace

bool KRPersonLoad::isSupportFile(const KRString& path) {
  return rowFor(path) != nullptr;
}

KRRef<KRPersonLoad> KRPersonLoad::loadWithFile(const KRString& path) {
  const Row* row = rowFor(path);
  return row == nullptr ? KRRef<KRPersonLoad>() : row->make(path);
}
