#include "platform/KRDate.h"

#include <array>
#include <cstdio>

#include "platform/KRHash.h"

namespace {

bool isLeap(int year) noexcept {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int daysIn(std::optional<int> year, int month) noexcept {
  constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leapDay = month == 2 && (!year || isLeap(*year));
  return kDays[static_cast<size_t>(month - 1)] + (leapDay ? 1 : 0);
}

}  // namespace

std::optional<KRDate> KRDate::make(std::optional<int> year, int month, int day) {
  if (year && (*year < 0 || *year > 9999)) return std::nullopt;
  if (month < 1 || month > 12 || day < 1 || day > daysIn(year, month)) return std::nullopt;
  return KRDate(static_cast<int16_t>(year.value_or(-1)), static_cast<uint8_t>(month), static_cast<uint8_t>(day));
}

KRString KRDate::description() const {
  char text[32];
  const int size = hasYear() ? std::snprintf(text, sizeof text, "%04d-%02d-%02d", year_, month_, day_)
                             : std::snprintf(text, sizeof text, "--%02d-%02d", month_, day_);
  return KRString::trusted(std::string_view(text, static_cast<size_t>(size)));
}

uint64_t KRDate::hash() const noexcept {
  return krHashMix(static_cast<uint64_t>(year_ + 1), static_cast<uint64_t>(month_ * 32 + day_));
}
