#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/KRString.h"

/// What the parameters of a vCard line say that this library acts on. The rest stays with the card.
struct KRVCardParameters {
  enum Encoding : uint8_t { None, QuotedPrintable, Base64 };

  Encoding encoding = None;
  /// The year that is a stand-in for none (X-APPLE-OMIT-YEAR); -1 when there is no such year.
  int omittedYear = -1;
  /// The value is an address to be looked up, not the thing itself.
  bool isURI = false;
  /// The rank among the values of its property, 1 the first; 0 for none given.
  uint8_t preference = 0;
  /// Number of the label's name in `KRLabelTable`, 0 for none; `labelText` where the table has no room.
  uint16_t label = 0;
  KRString labelText;
  /// CHARSET as written, or empty.
  std::string charset;
  /// The service of an account (X-SERVICE-TYPE), or empty.
  std::string service;
  /// The types in lower case, in their order, each followed by a blank: "work fax ".
  std::string types;

  bool hasType(std::string_view type) const noexcept;
};

/// Reads the parameters of a line as they stand between the property's name and the colon, the leading ";" included:
/// named or bare, quoted or not, repeated or in a list.
KRVCardParameters krParseParameters(std::string_view text);

/// The parameters of such a text one by one, without the ";" before them; empty ones are left out.
std::vector<std::string_view> krSplitParameters(std::string_view text);
