#pragma once

#include <string_view>

#include "platform/KRString.h"

/// An identifier for a card that has none of its own: made from its text alone, so the same on every reading and on
/// every machine. How the text is folded and how its lines end does not count.
KRString krCardIdentity(std::string_view card);
