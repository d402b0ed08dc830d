#pragma once

#include "app/JsonWriter.h"
#include "app/TableFile.h"
#include "app/Terminal.h"

/// What an import would make of a delimited file: what each column feeds, and the first contacts.
namespace TablePreview {

/// For people.
void print(Terminal& terminal, TableFile& table);
/// For programs: one object.
void write(JsonWriter& json, TableFile& table);

}  // namespace TablePreview
