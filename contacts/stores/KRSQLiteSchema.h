#pragma once

#include "contacts/stores/KRSQLite.h"

/// Looks through the whole file for damage and brings tables of an older version forward; an empty file gets its tables
/// when `mayCreate`. What it does not know is refused and left as it is: files of a newer version, of other programs.
void krPrepareLibrary(KRSQLiteDatabase& database, bool mayCreate);

/// The version that this library writes.
int64_t krLibraryVersion() noexcept;
