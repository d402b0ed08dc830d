#pragma once

#include <string>
#include <string_view>

#include "platform/KRString.h"

/// The names by which people may call the fixes on the command line.
namespace HandleNames {

/// The short name shown for a handle, such as "remove-space"; the handle's own name when it has none.
std::string shortName(KRText handleName);

/// The handle's name that the word stands for: a constant ("KRHandleNameRemoveSpace"), the same without what all of
/// them begin with ("RemoveSpace"), or a short name; upper and lower case do not matter. Throws `Unusable` with the
/// list of short names when it stands for none.
KRString resolve(std::string_view word);

}  // namespace HandleNames
