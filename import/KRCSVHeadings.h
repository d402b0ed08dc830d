#pragma once

#include <cstdint>
#include <optional>

#include "import/KRCSVTarget.h"
#include "platform/KRString.h"

/// What the headings of files mean that address books, mail programs, phones and directories write: a table of headings
/// in several languages, in groups of one way of writing each, the presets. Thread-safe.
class KRCSVHeadings {
 public:
  struct Meaning {
    KRCSVTarget target;
    /// The label for the values, or nothing.
    KRString label{};
    /// The number in the heading, such as 2 in "Phone 2 - Value"; 0 when there is none. Columns of one property, number
    /// and label belong to one value.
    uint32_t number = 0;
    /// The preset in which the heading stands.
    KRString preset{};
  };

  /// What the heading means in that preset, or in any when `preset` is nothing; nothing for a heading that is not
  /// known.
  static std::optional<Meaning> meaningOf(KRText heading, KRText preset = {});

  /// The names of the presets: "numbered-pairs", "office-columns" and so on.
  static KRStringList presets();

  /// The heading as it is compared: lower case, words between single spaces, marks left out, "e-mail" as "email", and
  /// the first number replaced by "#". `number` becomes that number, or 0.
  static std::string normalized(KRText heading, uint32_t& number);
};
