#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/KRDate.h"

// What stands inside the values of vCard lines, as people's programs write it. The texts are well-formed UTF-8.

bool krStartsIgnoringCase(std::string_view text, std::string_view start) noexcept;

/// A word of a text, by its place.
struct KRVCardWord {
  size_t begin;
  size_t end;
};
/// The words between white space of any script.
std::vector<KRVCardWord> krWordsOf(std::string_view text);

/// The scheme of a URI, without the colon; empty when the text has none.
std::string_view krSchemeOf(std::string_view text) noexcept;

/// The key of a messaging service from the way in which a card names it.
std::string krServiceKey(std::string_view written);
/// The user's name in what stands behind the scheme of an account's address, as messengers write it.
std::string_view krAccountUser(std::string_view text) noexcept;

/// Whether bytes begin as the pictures in contacts do.
bool krIsPicture(std::string_view bytes) noexcept;

/// The name of a custom label; one of the desktop's own book stands between marks when it is built in ("_$!<Home>!$_").
std::string_view krUnwrappedLabel(std::string_view label) noexcept;

/// The text form of the date, as its own `description` gives it.
std::string krDateText(const KRDate& date);

/// What phones mean by the number of a relation; empty for none.
std::string_view krPhoneRelation(int number) noexcept;
/// The number of at most two digits that the text is, or -1.
int krSmallNumber(std::string_view text) noexcept;
