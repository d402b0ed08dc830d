#pragma once

#include <string>
#include <string_view>

#include "contacts/vcard/KRVCardVersion.h"

// What undoes `krUndoEscapes`, for each version. The texts are well-formed UTF-8. Line breaks of any kind become line
// feeds, which versions 3.0 and 4.0 write as "\n"; the escape character of Japanese mail text is left out, as it would
// change the alphabet.

/// The value of a line of one text.
std::string krEscapeText(std::string_view text, KRVCardVersion version);
/// One part of a value in parts. A comma is escaped where it would separate values: everywhere but in version 2.1.
std::string krEscapePart(std::string_view text, KRVCardVersion version);
/// One element of a list that commas separate.
std::string krEscapeElement(std::string_view text, KRVCardVersion version);
/// An address to be looked up: commas and semicolons are its own.
std::string krEscapeURI(std::string_view text, KRVCardVersion version);

/// With "%41" for every byte but letters, digits and "-._~@+".
std::string krEncodePercent(std::string_view text);
