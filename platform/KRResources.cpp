#include "platform/KRResources.h"

#include <algorithm>
#include <map>
#include <string>

#include "platform/KREmbeddedResources.h"
#include "platform/KRValue.h"

namespace {

constexpr std::string_view kTableEnd = ".lproj/Localizable.strings";
constexpr std::string_view kImageFolder = "images/";
constexpr std::string_view kImageEnd = ".png";

/// The part of the path between the two, or nothing when the path is not of that kind.
KRText between(std::string_view path, std::string_view begin, std::string_view end) {
  if (path.size() < begin.size() + end.size() || !path.starts_with(begin) || !path.ends_with(end)) return {};
  return path.substr(begin.size(), path.size() - begin.size() - end.size());
}

/// Made once, of all that is embedded; a few small tables and the bytes of a few small images.
struct Everything {
  std::map<std::string, KRStringTable, std::less<>> tables;
  std::map<std::string, KRRef<KRData>, std::less<>> images;
  KRStringTable none;

  Everything() {
    for (const KREmbeddedFile& each : krEmbeddedFiles()) {
      if (const KRText language = between(each.path, "", kTableEnd); !language.isNothing())
        tables.emplace(language.view(), KRStringTable::parse(each.bytes));
      if (const KRText name = between(each.path, kImageFolder, kImageEnd); !name.isNothing())
        images.emplace(name.view(), krMake<KRData>(each.bytes));
    }
  }
};

const Everything& everything() {
  static const auto* const only = new Everything;
  return *only;
}

}  // namespace

std::string_view KRResources::file(KRText path) noexcept {
  for (const KREmbeddedFile& each : krEmbeddedFiles()) {
    if (each.path == path.view()) return each.bytes;
  }
  return {};
}

KRRef<KRData> KRResources::imageNamed(KRText name) {
  const auto found = everything().images.find(name.view());
  return found == everything().images.end() ? nullptr : found->second;
}

const KRStringTable& KRResources::strings(KRText language) {
  const auto found = everything().tables.find(language.view());
  return found == everything().tables.end() ? everything().none : found->second;
}

KRStringList KRResources::languages() {
  KRStringList languages;
  for (const auto& [language, table] : everything().tables) languages.emplace_back(language);
  return languages;
}
