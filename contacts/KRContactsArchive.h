#pragma once

#include <span>

#include "platform/KRKeyedUnarchiver.h"

/// The classes that stand in archives of persons: those of the contact model and the persons of this folder. What reads
/// the trash file, or an archive of one person, passes this table.
std::span<const KRArchiveClass> krContactsArchiveClasses();
