#pragma once

#include <cstdint>
#include <optional>

#include "platform/KRString.h"

/// A calendar date, never an instant: it has no time of day and no zone. The year may be unknown, as in a birthday kept
/// as day and month only; such a date is its own case and equals no date that has a year.
///
/// Proleptic Gregorian calendar, years 0 to 9999. The text form is ISO 8601: "1990-03-02", without a year "--03-02".
class KRDate {
 public:
  /// A date without a year is made with `nullopt`. Nothing when day and month do not exist (29 February does, without a
  /// year or in a leap year).
  static std::optional<KRDate> make(std::optional<int> year, int month, int day);

  bool hasYear() const noexcept { return year_ >= 0; }
  /// The year, or nothing.
  std::optional<int> year() const noexcept { return hasYear() ? std::optional<int>(year_) : std::nullopt; }
  int month() const noexcept { return month_; }
  int day() const noexcept { return day_; }

  KRString description() const;
  uint64_t hash() const noexcept;
  friend bool operator==(const KRDate&, const KRDate&) noexcept = default;

 private:
  KRDate(int16_t year, uint8_t month, uint8_t day) noexcept : year_(year), month_(month), day_(day) {}

  int16_t year_;
  uint8_t month_;
  uint8_t day_;
};
