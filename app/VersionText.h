#pragma once

#include <string>

/// What `krcontacts --version` shows: the library's version number and version string, and whether it
/// reaches the desktop's address books, each on a line of its own.
std::string versionText();
