#pragma once

#include <string>
#include <vector>

#include "app/JsonWriter.h"
#include "app/Terminal.h"
#include "handles/KRMergeAccount.h"

/// What a merge made of contacts, for people and for programs.
struct MergeReport {
  /// A contact that was merged, as it was called before.
  struct Source {
    KRString ID;
    std::string text;
  };

  std::vector<Source> sources;
  KRRef<IKRPerson> merged;
  std::vector<KRMergedValue> account;

  size_t count(KRMergedValue::Fate fate) const;
  /// The merged contact, and beside every value of every contact what became of it; last the sum, in which what is only
  /// in the trash is listed by name.
  void print(Terminal& terminal, size_t place) const;
  /// The members of the document of `merge --json` that tell the same.
  void write(JsonWriter& json, size_t place) const;
};
