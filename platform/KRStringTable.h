#pragma once

#include <cstddef>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/KRString.h"

/// A table of texts by key, as it stands in a ".strings" file:
///
///     /* Shown on the button. */
///     "KRIssueHandle_AddSuffix" = "Add \"Jr.\" to the list";
///
/// UTF-8, with comments of both kinds (to the end of the line, or between slash-stars) between entries. Keys may stand
/// without quotes when they are words of letters, digits and "_.-$/:". An entry without "= value" is its own text.
/// Inside quotes, \n \t \r \" \' \\ and the like, three octal digits and \U or \u with four hexadecimal digits (two of
/// them for a character beyond U+FFFF) stand for a character; any other character after a backslash stands for itself.
///
/// Immutable once made; safe to read from any thread.
class KRStringTable {
 public:
  /// Reads a table. What is not an entry is passed over up to the next semicolon or line end, and counted in
  /// `mistakes`; of several entries with one key the last counts.
  static KRStringTable parse(std::string_view text);

  /// The text under the key, or nothing.
  KRString find(KRText key) const;

  size_t count() const noexcept { return entries_.size(); }
  /// All keys in the order of their first entries.
  const std::vector<KRString>& keys() const noexcept { return keys_; }
  /// How many places of the text were not understood, and how many keys were given twice.
  size_t mistakes() const noexcept { return mistakes_; }

 private:
  std::unordered_map<KRString, KRString, KRTextHash, KRTextEqual> entries_;
  std::vector<KRString> keys_;
  size_t mistakes_ = 0;
};
