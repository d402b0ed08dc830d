#pragma once

#include <span>

#include "import/KRCSVTarget.h"

/// The data behind `KRCSVHeadings`.
namespace KRCSVHeadingTable {

/// A heading as `KRCSVHeadings::normalized` gives it, and the name of what it feeds.
struct Heading {
  KRText text;
  KRText target;
  KRText label{};
};

/// A group of headings that one kind of program writes.
struct Preset {
  KRString name;
  std::span<const Heading> headings;
};

/// Words before or behind a heading that tell the label: "home" of "home phone", "geschäftlich" of "ort geschäftlich".
struct LabelWords {
  KRText text;
  KRText label;
};

std::span<const Preset> presets();
std::span<const LabelWords> labelWords();

}  // namespace KRCSVHeadingTable
