#pragma once

#include <string>
#include <string_view>

#include "contacts/model/KRProperty.h"
#include "contacts/vcard/KRVCardVersion.h"

// What the writer calls lines, types and kinds of pictures; the tables of its words.

/// The line of a property that is one text; "X-KR-TEXT" for any other.
std::string krTextLineName(KROrdinal property);

/// The types that programs know on the lines of a property in a version, in lower case, each between spaces; every
/// other label is written out. Empty where there are none.
std::string_view krKnownTypes(KROrdinal property, KRVCardVersion version) noexcept;

/// Whether the desktop's own book translates a label: it marks those as built in.
bool krIsBuiltInLabel(std::string_view label) noexcept;

/// The line that version 2.1 has for a service; empty for most.
std::string krServiceLineName21(std::string_view service);

/// The kind of a picture by its first bytes, such as "jpeg"; empty for an unknown one.
std::string_view krPictureKind(std::string_view bytes) noexcept;
