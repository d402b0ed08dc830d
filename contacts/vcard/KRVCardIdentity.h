#pragma once

#include <string_view>

#include "platform/KRString.h"

/// An identifier for a card that has none of its own: made from its text alone, so the same on every reading and on
/// every machine. How the text is folded, how its lines end and where lines are empty does not count: the same card is
/// the same however it was cut out of its file.
KRString krCardIdentity(std::string_view card);
