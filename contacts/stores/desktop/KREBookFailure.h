#pragma once

#include <string>
#include <string_view>

#include "contacts/stores/KRDesktopService.h"
#include "contacts/stores/desktop/KREBook.h"

/// What the service says went wrong, as this library says it; takes the error over. `doing` completes "cannot ...".
KRError krEBookFailure(GError* error, std::string_view doing);

/// That the service has not answered in time.
KRError krEBookSilence();
