#pragma once

#include "platform/KRString.h"

/// Texts regardless of upper and lower case, by Unicode's rules and by no language's. All thread-safe.

/// Orders two texts regardless of case, otherwise exactly: character by character, each folded by itself (so that "ß"
/// is not "ss"), by code point. Negative, zero or positive. A total order in which only texts that differ in nothing
/// but case are equal; nothing comes before the empty text.
int krCompareCaseless(KRText a, KRText b) noexcept;

/// A text for each text such that comparing keys by their bytes is comparing the texts with `krCompareCaseless`; for
/// sorting many. Nothing for nothing.
KRString krCaselessKey(KRText text);

/// Upper and lower case of a whole text, with the characters that become several ("ß" becomes "SS"). Nothing for
/// nothing, and when ICU fails.
KRString krUpper(KRText text);
KRString krLower(KRText text);
