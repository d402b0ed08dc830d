#pragma once

#include <span>

#include "platform/KRKeyedUnarchiver.h"

/// The classes of the contact model that stand in keyed archives, with the functions that read them back. A new class
/// of values needs a row in the table.
std::span<const KRArchiveClass> krModelArchiveClasses();
