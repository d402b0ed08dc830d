#pragma once

#include "platform/KRString.h"

/// The library's version as a number.
inline constexpr double KRAddressBookManagerSDKVersionNumber = 1.0;

/// The build's identification text: version, compiler and kind of build, "1.0 (GCC 12.2.0, release)". The same sources
/// built the same way give the same text.
extern const KRString KRAddressBookManagerSDKVersionString;
