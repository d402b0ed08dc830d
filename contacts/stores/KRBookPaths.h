#pragma once

#include <vector>

#include "contacts/stores/KRAddressBookProvider.h"

/// The books at a path, by what is there: a vCard file or a folder of them is one book, a library (SQLite) holds
/// several. Never none: what cannot be told what it is, is one source whose opening tells why. The path is best
/// absolute, since the books' identifiers are made from it.
std::vector<KRBookSource> krBooksAtPath(KRText path);

/// Whether there is a file at the path that is a database, or is named as one (.sqlite): one that cannot be read, or is
/// damaged, is not taken for anything else.
bool krIsLibraryPath(KRText path);
