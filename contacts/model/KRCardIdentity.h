#pragma once

#include <array>
#include <span>
#include <string_view>

#include "platform/KRString.h"
#include "platform/KRText.h"

/// An identifier for a card that has none of its own: made from its text alone, so the same on every reading and on
/// every machine. How the text is folded, how its lines end and where lines are empty does not count: the same card is
/// the same however it was cut out of its file.
KRString krCardIdentity(std::string_view card);

/// The text of such an identifier: hexadecimal digits.
struct KRCardIdentity {
  std::array<char, 32> digits;

  KRText text() const noexcept { return {digits.data(), digits.size()}; }
};

/// The identifiers of many cards, which takes far less time than one after the other: each is a row of steps of which
/// every one waits for the one before. `identities` has room for all.
void krCardIdentities(std::span<const std::string_view> cards, std::span<KRCardIdentity> identities);
