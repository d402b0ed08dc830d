#include "contacts/model/KRCountry.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

std::string_view addressLocale() {
  for (const char* variable : {"LC_ALL", "LC_ADDRESS", "LANG"}) {
    const char* value = std::getenv(variable);
    if (value != nullptr && *value != '\0') return value;
  }
  return {};
}

bool isLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

/// "AT" of "de_AT.UTF-8@euro"; no text when the locale names no region.
std::string regionOf(std::string_view locale) {
  locale = locale.substr(0, locale.find_first_of(".@"));
  const size_t bar = locale.find_last_of("_-");
  if (bar == std::string_view::npos) return {};
  std::string region(locale.substr(bar + 1));
  if (region.size() != 2 || !std::all_of(region.begin(), region.end(), isLetter)) return {};
  for (char& c : region) c = static_cast<char>(c & ~0x20);
  return region;
}

}  // namespace

KRRef<KRCountry> KRCountry::local() {
  const std::string region = regionOf(addressLocale());
  return krMake<KRCountry>(region.empty() ? "US"_kr : KRString(region));
}
