#pragma once

#include "platform/KRString.h"

// Both append the text to the end of the user's list, which is then saved, unless the list holds it, to the letter.
// Nothing is ignored.

void krAllowPrefix(const KRString& text);
void krAllowSuffix(const KRString& text);
