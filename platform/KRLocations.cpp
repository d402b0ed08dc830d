// What another system would do differently about folders is in this file.
#include "platform/KRLocations.h"

#include <pwd.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace {

/// One kind of folder: its name when all are moved, its variable, and its usual place under the home folder.
struct Place {
  const char* moved;
  const char* variable;
  const char* usual;
};

constexpr Place kConfiguration = {"config", "XDG_CONFIG_HOME", ".config"};
constexpr Place kApplicationSupport = {"data", "XDG_DATA_HOME", ".local/share"};
constexpr Place kCache = {"cache", "XDG_CACHE_HOME", ".cache"};

std::string_view environment(const char* name) {
  const char* value = getenv(name);
  return value == nullptr ? std::string_view() : std::string_view(value);
}

std::string accountHome() {
  std::vector<char> room(16384);
  passwd entry = {};
  passwd* found = nullptr;
  if (getpwuid_r(getuid(), &entry, room.data(), room.size(), &found) != 0 || found == nullptr) return {};
  return entry.pw_dir == nullptr ? std::string() : std::string(entry.pw_dir);
}

std::string home() {
  const std::string_view told = environment("HOME");
  return told.starts_with('/') ? std::string(told) : accountHome();
}

KRString joined(std::string_view folder, std::string_view name) {
  while (folder.ends_with('/')) folder.remove_suffix(1);
  return krConcat({KRString(folder), name.empty() ? "" : "/", name});
}

KRString locate(const Place& place) {
  if (const std::string_view all = environment("KRCONTACTS_HOME"); !all.empty()) {
    std::error_code failed;
    const std::filesystem::path absolute = std::filesystem::absolute(std::filesystem::path(all), failed);
    return failed ? KRString() : joined(absolute.lexically_normal().native(), place.moved);
  }
  if (const std::string_view folder = environment(place.variable); folder.starts_with('/')) return joined(folder, "");
  const std::string under = home();
  return under.starts_with('/') ? joined(under, place.usual) : KRString();
}

}  // namespace

KRString KRLocations::configurationFolder() {
  return locate(kConfiguration);
}

KRString KRLocations::applicationSupportFolder() {
  return locate(kApplicationSupport);
}

KRString KRLocations::cacheFolder() {
  return locate(kCache);
}
