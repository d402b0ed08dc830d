#pragma once

#include <vector>

#include "app/JsonWriter.h"
#include "detectors/KRNearMissFind.h"
#include "issues/KRIssueFindResult.h"
#include "platform/KRString.h"

/// The document of `scan --json`. It is written as it is made: its size costs no memory.
namespace ScanDocument {

/// Writes the document as one JSON value. `scanned` are the names of the issues that were looked for; `nearMisses` what
/// was found besides, or null when it was not looked for; `hidden` how many ignored findings were left out, or null
/// when none are to be. Stops early when the output has failed.
void write(JsonWriter& json, KRIssueFindResult& result, const KRStringList& scanned,
           const std::vector<KRNearMiss>* nearMisses = nullptr, const size_t* hidden = nullptr);

}  // namespace ScanDocument
