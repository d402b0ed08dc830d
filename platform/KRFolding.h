#pragma once

#include "platform/KRString.h"

/// What is taken out of a text before it is compared loosely; to be joined by `|`.
namespace KRFold {
inline constexpr unsigned Case = 1;
/// Combining marks: accents, umlauts, vowel points.
inline constexpr unsigned Marks = 2;
inline constexpr unsigned Spaces = 4;
/// Punctuation, and characters that are not seen: controls and format characters.
inline constexpr unsigned Punctuation = 8;
inline constexpr unsigned All = Case | Marks | Spaces | Punctuation;
}  // namespace KRFold

/// The text without what `what` names, in canonical decomposition: "Zoë O'Neill" becomes "zoeoneill". By Unicode's
/// rules and by no language's; "ß" is "ss" where case is folded. For telling what nearly is the same; never for
/// deciding that it is. Nothing for nothing, and when ICU fails. Thread-safe.
KRString krFolded(KRText text, unsigned what = KRFold::All);

/// The decimal digits of any script in the text, as "0" to "9". Nothing for nothing.
KRString krDigitsOf(KRText text);
