#pragma once

#include <array>
#include <string>
#include <string_view>

#include "contacts/KRTempPerson.h"
#include "contacts/model/KRProperty.h"

// The labels of values that come from cells.

/// Without the star that marks what the exporter itself has named.
std::string_view krCSVWithoutStar(std::string_view text) noexcept;
/// The label as cards have it: the usual words in lower case, any other text as it is.
std::string krCSVUsualLabel(std::string_view text);
/// The shared label of that name where there is one; nothing for nothing.
KRRef<KRLabel> krCSVSharedLabel(KRText name);

/// Puts single values into persons, labelled with the names of their properties, which all persons of a run share.
class KRCSVSingles {
 public:
  KRCSVSingles();

  void set(KRTempPerson& person, KROrdinal property, KRValue value) const;

 private:
  std::array<KRRef<KRLabel>, kKROrdinalCount> labels_;
};
