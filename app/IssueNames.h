#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/KRString.h"

/// The names by which people may call the issues on the command line.
namespace IssueNames {

/// The short name shown for an issue, such as "blank-name"; the issue's own name when it has none.
std::string shortName(KRText issueName);

/// The name of the constant that holds the issue's name, such as "KRIssueBlankName".
std::string constantName(KRText issueName);

/// The issue names that the words stand for, in their order. A word is a constant, its value, a short name, or several
/// of them with commas between; upper and lower case do not matter. Throws `Unusable` with the list of names when a
/// word stands for no issue of the catalogue, or when there is none.
KRStringList resolve(const std::vector<std::string>& words);

}  // namespace IssueNames
