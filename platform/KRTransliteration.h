#pragma once

#include <cstddef>
#include <string>

#include "platform/KRString.h"

/// The text in Latin capitals, for sorting names: Chinese characters become Mandarin syllables without tones, set off
/// by spaces from each other and from letters beside them; every other character loses its combining marks; all is put
/// in upper case. "王小明" becomes "WANG XIAO MING", "Zoë" becomes "ZOE", "Lee王" becomes "LEE WANG".
///
/// Spaces are set as ICU's transliterator from Han to Latin sets them, which puts one also between closing punctuation
/// and a letter ("Smith,Ann" becomes "SMITH, ANN") and between a letter and an opening bracket.
///
/// Nothing for nothing, and when ICU fails. Thread-safe.
KRString krMandarinLatinUpper(KRText text);

/// Appends the caseless key (`krCaselessKey`) of the text's capitals as above, by which a list of many names is sorted.
/// For most names this takes no memory but that of `to`. False, with nothing appended, where there are no such
/// capitals. Thread-safe.
bool krAppendMandarinLatinKey(std::string& to, KRText text);
