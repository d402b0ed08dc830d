#pragma once

#include <cstdint>
#include <optional>

#include "platform/KRBinaryPlist.h"
#include "platform/KRValue.h"

// How values stand in a property list: text, truth, whole numbers, numbers and bytes as they are, lists as arrays, maps
// as dictionaries. A date stands as the instant at which its day begins in UTC; an instant reads as the day that it
// falls on there.

/// How deep lists and maps may stand in one another, and how many values one value may hold in all. A value of this
/// kind is a setting; what is larger is a damaged file or a mistake.
inline constexpr int kKRDeepestPlistValue = 400;
inline constexpr int64_t kKRLargestPlistValue = int64_t{1} << 20;

/// The value at the node; nothing when it is null, holds what values have no kind for (a reference), or is beyond the
/// limits. Whole numbers above the largest `int64_t` become numbers. Lists and maps are the caller's own.
KRValue krValueOfPlist(const KRBinaryPlist& plist, KRBinaryPlist::Node node);

/// The same for scalars only; nothing for arrays and dictionaries.
KRValue krPlainValueOfPlist(const KRBinaryPlist& plist, KRBinaryPlist::Node node);

/// Adds the value to the list and returns its node. Nothing when it cannot stand in a property list: nothing itself, a
/// date without a year, an object of another class, a map with a key that is nothing, or a value beyond the limits
/// (such as a list that holds itself).
std::optional<KRBinaryPlist::Node> krAddToPlist(KRBinaryPlist& plist, const KRValue& value);

/// A copy that shares no list or map with the value, so that later changes to either are not seen by the other.
/// Nothing when the value cannot stand in a property list.
KRValue krCopyThroughPlist(const KRValue& value);

/// The UTC day of seconds since 2001-01-01 00:00:00 UTC; nothing outside the years 0 to 9999.
std::optional<KRDate> krDateOfInstant(double secondsSince2001);
