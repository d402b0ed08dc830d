#pragma once

#include <cstdint>
#include <string_view>

#include "contacts/model/KRProperty.h"

/// What a line of a vCard means to a contact.
enum class KRVCardMeaning : uint8_t {
  /// Not for us: the line stays with the card and is not looked at.
  Unknown,
  Begin,
  End,
  Version,
  FormattedName,
  Name,
  Organisation,
  /// A text of which the first line counts: `KRVCardProperty::ordinal`.
  FirstText,
  Tags,
  Birthday,
  Phone,
  Email,
  Address,
  Account,
  /// A line of its own for each messaging service: `KRVCardProperty::text` names it.
  ServiceAccount,
  Photo,
  /// An entry of a multiple value of text, with `text` as its label where the line itself gives none.
  TextEntry,
  /// An entry of a multiple value of dates, likewise.
  DateEntry,
  UID,
  Kind,
  ShowAs,
  GroupLabel,
  GroupCountryCode,
  Agent,
  AndroidCustom,
  Sound,
};

struct KRVCardProperty {
  std::string_view name;
  KRVCardMeaning meaning = KRVCardMeaning::Unknown;
  KROrdinal ordinal = KROrdinal::Other;
  std::string_view text;
};

/// What the property of that name (any case) means. One step, whatever the name.
const KRVCardProperty& krVCardProperty(std::string_view name) noexcept;
