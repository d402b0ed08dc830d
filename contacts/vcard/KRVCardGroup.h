#pragma once

#include <string_view>
#include <vector>

#include "platform/KRString.h"

/// What the card of a group says: "KIND:group" of version 4.0, or the desktop's own way before it.
struct KRVCardGroup {
  /// Nothing when the card has none.
  KRString name{};
  KRString UID{};
  /// The identifiers of its members as written, in the card's order; compare them by `krPlainUID`.
  KRStringList members{};

  /// What a group's card says, from its bytes.
  static KRVCardGroup read(std::string_view card);
};

/// The identifier without "urn:uuid:" (any case) before it: cards write one and the same with and without.
KRText krPlainUID(KRText UID) noexcept;

/// Whether lines of that name tell the members of a group, in either of the two ways.
bool krIsGroupMember(std::string_view name) noexcept;
