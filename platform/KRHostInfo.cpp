#include "platform/KRHostInfo.h"

#include <unistd.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "platform/KRAtomic.h"
#include "platform/KRLocations.h"

namespace {

KRAtomic<KRString>& chosen() {
  static auto* const only = new KRAtomic<KRString>;
  return *only;
}

KRString executableName() {
  std::string path(4096, '\0');
  const ssize_t count = readlink("/proc/self/exe", path.data(), path.size());
  if (count <= 0) return {};
  std::string_view name(path.data(), static_cast<size_t>(count));
  // The system marks a program that was replaced while it runs, as by an update.
  constexpr std::string_view kDeleted = " (deleted)";
  if (name.ends_with(kDeleted)) name.remove_suffix(kDeleted.size());
  name.remove_prefix(name.rfind('/') + 1);
  return name.empty() ? KRString() : KRString(name);
}

}  // namespace

KRString KRHostInfo::identifier() {
  KRString identifier = chosen().get();
  if (!identifier.isEmpty()) return identifier;
  static const auto* const executable = new KRString(executableName());
  return *executable;
}

KRString KRHostInfo::fileName() {
  const KRString known = identifier();
  std::string name(known.isNothing() ? std::string_view("(null)") : known.view());
  std::replace(name.begin(), name.end(), '/', '_');
  return KRString(name);
}

KRString KRHostInfo::dataFolder() {
  const KRString support = KRLocations::applicationSupportFolder();
  return support.isNothing() ? KRString() : krConcat({support, "/", fileName()});
}

void KRHostInfo::setIdentifier(KRString identifier) {
  chosen().set(std::move(identifier));
}
