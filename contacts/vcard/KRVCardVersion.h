#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// The versions of the vCard format that this library writes; it reads all of them.
enum class KRVCardVersion : uint8_t { V21, V30, V40 };

/// The version as the VERSION line names it: "2.1", "3.0" or "4.0".
constexpr std::string_view krVCardVersionName(KRVCardVersion version) noexcept {
  return version == KRVCardVersion::V21 ? "2.1" : version == KRVCardVersion::V30 ? "3.0" : "4.0";
}

/// The version of that name, or nothing for any other text.
constexpr std::optional<KRVCardVersion> krVCardVersionNamed(std::string_view name) noexcept {
  for (const KRVCardVersion version : {KRVCardVersion::V21, KRVCardVersion::V30, KRVCardVersion::V40}) {
    if (krVCardVersionName(version) == name) return version;
  }
  return std::nullopt;
}
