#pragma once

#include <string>
#include <vector>

#include "contacts/stores/KRDesktopBooks.h"
#include "tests/contacts/stores/StoreSamples.h"

// The real address books of the session that the test program runs in.

/// Opens the desktop's book of that name; new on every call.
inline KRResult<KRRef<KRStoredBook>> krDesktopBook(KRText name) {
  KRDesktopBooks books;
  for (const KRBookSource& source : books.sources()) {
    if (source.name != name) continue;
    KRResult<KRRef<KRAddressBook>> book = source.open();
    if (!book) return book.error();
    return KRRef<KRStoredBook>(dynamic_cast<KRStoredBook*>(book->get()));
  }
  return KRError{KRErrorCode::NotFound, "no such book"};
}
