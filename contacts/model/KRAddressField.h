#pragma once

#include <array>
#include <cstdint>

#include "platform/KRString.h"

/// The fields of a postal address, in the order of the parts of a vCard ADR value (RFC 6350, section 6.3.1).
enum class KRAddressField : uint8_t { PostOfficeBox, Extended, Street, City, Region, PostalCode, Country };
inline constexpr size_t kKRAddressFieldCount = 7;

/// Their names, as `KRObjectAddress` takes them. `country` is the country as written; the code stands beside it.
inline constexpr std::array<KRString, kKRAddressFieldCount> kKRAddressFieldNames = {
    "poBox"_kr, "extended"_kr, "street"_kr, "city"_kr, "region"_kr, "postalCode"_kr, "country"_kr};
