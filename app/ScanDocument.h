#pragma once

#include "app/JsonWriter.h"
#include "issues/KRIssueFindResult.h"
#include "platform/KRString.h"

/// The document of `scan --json`. It is written as it is made: its size costs no memory.
namespace ScanDocument {

/// Writes the document as one JSON value. `scanned` are the names of the issues that were looked for. Stops early when
/// the output has failed.
void write(JsonWriter& json, KRIssueFindResult& result, const KRStringList& scanned);

}  // namespace ScanDocument
