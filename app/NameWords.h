#pragma once

#include <string>
#include <string_view>

/// Words by which people call things that have a constant in the library and a short name on the command line.
namespace NameWords {

/// Whether the word is the constant, such as "KRIssueBlankName", or what who knows it guesses, without what all of its
/// kind begin with: "blank-name". Upper and lower case do not matter.
bool isConstant(std::string_view word, std::string_view constant, std::string_view prefix);

/// The short names of a table's rows with commas between.
template <class Rows>
std::string list(const Rows& rows) {
  std::string list;
  for (const auto& row : rows) list += (list.empty() ? "" : ", ") + std::string(row.shortName);
  return list;
}

}  // namespace NameWords
