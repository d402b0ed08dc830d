#include "contacts/stores/KRUnavailableBook.h"

#include <utility>

KRUnavailableBook::KRUnavailableBook(const KRBookSource& source, KRError error)
    : KRAddressBook(source.ID, source.name), kind_(source.kind), place_(source.place), error_(std::move(error)) {}

KRResult<void> KRUnavailableBook::load() {
  return error_;
}

KRResult<void> KRUnavailableBook::saveNow() {
  return error_;
}
