#pragma once

#include <cstddef>

#include "app/JsonWriter.h"
#include "contacts/model/KRAddressBook.h"

/// Contacts as programs read them: what `show --json` and `load` write.
namespace PersonDocument {

/// Writes `"addressBook": {...}`, a member of the document that describes a book.
void writeBook(JsonWriter& json, KRAddressBook& book);

/// Writes the contact as one JSON object on one line; `index` is its place. Leaves no values behind in the contact, so
/// that a book of any size can be written.
void write(JsonWriter& json, const IKRPerson& person, size_t index);

/// Writes one value: a text, an object of its parts, null for nothing. Of data size and digest.
void writeValue(JsonWriter& json, const KRValue& value);

}  // namespace PersonDocument
