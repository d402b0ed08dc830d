#pragma once

#include <optional>

#include "app/FixRun.h"
#include "app/JsonWriter.h"

/// What fixes have done, or would do, as one JSON document (docs/fix.schema.json), written piece by piece.
class FixDocument {
 public:
  explicit FixDocument(JsonWriter& json) : json_(json) {}

  void begin(KRAddressBook& book, bool isDryRun);
  /// The fixes of one issue: `beginFix`, then in a dry run `beginEffects`, each effect, `endEffects`; `endFix`.
  void beginFix(const FixChoice& choice);
  void beginEffects();
  void addEffect(const FixEffect& effect);
  void endEffects();
  void endFix(const FixAccount& account);
  /// With how many ignored findings are remembered from now on, where that was asked for.
  void end(std::optional<size_t> remembered = std::nullopt);

 private:
  void writeLines(const FixEffect& effect);

  JsonWriter& json_;
};
