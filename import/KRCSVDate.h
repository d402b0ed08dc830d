#pragma once

#include <optional>
#include <string_view>

#include "platform/KRDate.h"

/// The dates that delimited files hold: ISO 8601 with or without hyphens and with or without a time behind it, years
/// first with slashes or full stops, and local forms of day, month and year between slashes, full stops or hyphens,
/// where full stops mean the day first. A year of two digits is that of the last hundred years; 1604, which some
/// programs write for an unknown year, and forms such as "--04-14" give a date without a year.
class KRCSVDateReader {
 public:
  /// Tells how the local dates of a column are written: looks at one value after the other.
  void learn(std::string_view text) noexcept;
  /// Whether a value has shown it.
  bool isCertain() const noexcept { return dayFirst_ != monthFirst_; }
  /// Day before month, unless what was learned or, if nothing was, the user's country tells otherwise.
  bool isDayFirst() const;
  /// What the host says counts more than what is learned.
  void setDayFirst(std::optional<bool> isDayFirst) noexcept { given_ = isDayFirst; }

  /// The date, or nothing: for other text, for no text and for the empty dates "0/0/00" and "0000-00-00".
  std::optional<KRDate> read(std::string_view text) const;
  /// Whether the text stands for no date at all: blank or nothing but zeros between marks.
  static bool isNone(std::string_view text) noexcept;
  /// The date of a year, a month and a day in columns of their own; without a year when that is empty. The month may be
  /// an English name.
  static std::optional<KRDate> of(std::string_view year, std::string_view month, std::string_view day);

 private:
  std::optional<bool> given_;
  size_t dayFirst_ = 0;
  size_t monthFirst_ = 0;
};
