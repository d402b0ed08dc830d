#include "platform/KRLanguage.h"

#include <stdlib.h>

#include <mutex>
#include <string>
#include <string_view>

#include "platform/KRASCII.h"
#include "platform/KRResources.h"

namespace {

constexpr KRString kDefault = "en"_kr;

struct State {
  std::mutex lock;
  KRString chosen;
  /// What was worked out from the choice or the environment; nothing until asked for.
  KRString language;
};

State& state() {
  static auto* const only = new State;
  return *only;
}

std::string_view firstSet(std::initializer_list<const char*> variables) {
  for (const char* variable : variables) {
    const char* value = getenv(variable);
    if (value != nullptr && *value != '\0') return value;
  }
  return {};
}

bool isSmall(char c) {
  return c >= 'a' && c <= 'z';
}

/// "fr" of "fr_CA.UTF-8@euro" and of "FR-ca".
std::string languagePart(std::string_view locale) {
  return krLowerASCII(locale.substr(0, locale.find_first_of("_-.@")));
}

/// "CA" of "fr_CA.UTF-8@euro"; empty when there is none. A script may stand between: "zh-Hant-TW".
std::string countryPart(std::string_view locale) {
  locale = locale.substr(0, locale.find_first_of(".@"));
  while (true) {
    const size_t separator = locale.find_first_of("_-");
    if (separator == std::string_view::npos) return {};
    locale.remove_prefix(separator + 1);
    const std::string_view part = locale.substr(0, locale.find_first_of("_-"));
    if (part.size() == 2 && isSmall(krLowerASCII(part[0])) && isSmall(krLowerASCII(part[1]))) {
      std::string country;
      for (const char c : part) country += static_cast<char>(krLowerASCII(c) - 'a' + 'A');
      return country;
    }
  }
}

KRString choose(std::string_view locale) {
  const std::string wanted = languagePart(locale);
  for (const KRString& language : KRLanguage::available()) {
    if (language.view() == wanted) return language;
  }
  return kDefault;
}

}  // namespace

KRString KRLanguage::current() {
  const std::lock_guard lock(state().lock);
  if (state().language.isNothing()) {
    const std::string_view locale =
        state().chosen.isEmpty() ? firstSet({"LC_ALL", "LC_MESSAGES", "LANG"}) : state().chosen.view();
    state().language = choose(locale);
  }
  return state().language;
}

void KRLanguage::set(const KRString& language) {
  const std::lock_guard lock(state().lock);
  state().chosen = language;
  state().language = nullptr;
}

KRStringList KRLanguage::available() {
  return KRResources::languages();
}

KRString KRLanguage::country() {
  const std::lock_guard lock(state().lock);
  std::string country = countryPart(state().chosen.view());
  if (country.empty()) country = countryPart(firstSet({"LC_ALL", "LC_ADDRESS", "LANG"}));
  return country.empty() ? KRString() : KRString(country);
}
