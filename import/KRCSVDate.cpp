#include "import/KRCSVDate.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <string>

#include "contacts/model/KRCountry.h"
#include "platform/KRASCII.h"

namespace {

/// The year that some programs write when they know none.
constexpr int kNoYear = 1604;

bool isDigit(char c) noexcept {
  return c >= '0' && c <= '9';
}

std::string_view trimmed(std::string_view text) noexcept {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\n')) text.remove_suffix(1);
  return text;
}

/// A whole number of at most four digits, or nothing.
std::optional<int> number(std::string_view digits) noexcept {
  if (digits.empty() || digits.size() > 4 || !std::all_of(digits.begin(), digits.end(), isDigit)) return std::nullopt;
  int value = 0;
  for (const char digit : digits) value = value * 10 + (digit - '0');
  return value;
}

/// Three pieces between two marks of the same kind.
struct Pieces {
  std::array<std::string_view, 3> texts;
  char mark = 0;
};

std::optional<Pieces> piecesOf(std::string_view text) noexcept {
  const size_t first = text.find_first_of("/.-");
  if (first == std::string_view::npos) return std::nullopt;
  const size_t second = text.find(text[first], first + 1);
  if (second == std::string_view::npos) return std::nullopt;
  return Pieces{{trimmed(text.substr(0, first)), trimmed(text.substr(first + 1, second - first - 1)),
                 trimmed(text.substr(second + 1))},
                text[first]};
}

/// What stands before the time of day.
std::string_view withoutTime(std::string_view text) noexcept {
  text = trimmed(text);
  const size_t mark = text.find('T');
  const size_t colon = text.find(':');
  if (mark != std::string_view::npos && mark >= 7) return text.substr(0, mark);
  if (colon == std::string_view::npos) return text;
  return trimmed(text.substr(0, std::min(text.find(' '), text.size())));
}

int thisYear() noexcept {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  gmtime_r(&now, &parts);
  return parts.tm_year + 1900;
}

/// The year of a text of two or four digits.
std::optional<int> yearOf(std::string_view text) noexcept {
  const std::optional<int> year = number(text);
  if (!year || (text.size() != 2 && text.size() != 4)) return std::nullopt;
  if (text.size() == 4) return year;
  const int century = thisYear() / 100 * 100;
  return *year <= thisYear() % 100 ? century + *year : century - 100 + *year;
}

std::optional<KRDate> made(std::optional<int> year, std::optional<int> month, std::optional<int> day) {
  if (!month || !day) return std::nullopt;
  return KRDate::make(year == kNoYear ? std::nullopt : year, *month, *day);
}

std::optional<int> monthOf(std::string_view text) {
  if (const std::optional<int> month = number(text)) return month;
  constexpr std::string_view kMonths = "janfebmaraprmayjunjulaugsepoctnovdec";
  if (text.size() < 3) return std::nullopt;
  const size_t at = kMonths.find(krLowerASCII(text.substr(0, 3)));
  if (at == std::string_view::npos || at % 3 != 0) return std::nullopt;
  return static_cast<int>(at / 3) + 1;
}

/// "19900414", "--0414", "--04-14".
std::optional<KRDate> compact(std::string_view text) {
  if (text.starts_with("--")) {
    text.remove_prefix(2);
    if (text.size() == 5 && text[2] == '-')
      return made(std::nullopt, number(text.substr(0, 2)), number(text.substr(3)));
    if (text.size() == 4) return made(std::nullopt, number(text.substr(0, 2)), number(text.substr(2)));
    return std::nullopt;
  }
  if (text.size() != 8) return std::nullopt;
  return made(number(text.substr(0, 4)), number(text.substr(4, 2)), number(text.substr(6)));
}

}  // namespace

void KRCSVDateReader::learn(std::string_view text) noexcept {
  const std::optional<Pieces> pieces = piecesOf(withoutTime(text));
  if (!pieces || pieces->mark == '.') return;
  const std::optional<int> first = number(pieces->texts[0]);
  const std::optional<int> second = number(pieces->texts[1]);
  if (!first || !second || pieces->texts[0].size() > 2 || pieces->texts[1].size() > 2) return;
  if (*first > 12 && *first <= 31 && *second <= 12) ++dayFirst_;
  if (*second > 12 && *second <= 31 && *first <= 12) ++monthFirst_;
}

bool KRCSVDateReader::isDayFirst() const {
  if (given_) return *given_;
  if (isCertain()) return dayFirst_ > monthFirst_;
  constexpr std::string_view kMonthFirst = "US PH PR GU";
  return kMonthFirst.find(KRCountry::local()->code().view()) == std::string_view::npos;
}

std::optional<KRDate> KRCSVDateReader::read(std::string_view text) const {
  text = withoutTime(text);
  if (const std::optional<KRDate> date = compact(text)) return date;
  const std::optional<Pieces> pieces = piecesOf(text);
  if (!pieces) return std::nullopt;
  const auto& [texts, mark] = *pieces;
  if (texts[0].size() == 4) return made(number(texts[0]), number(texts[1]), number(texts[2]));
  const std::optional<int> year = yearOf(texts[2]);
  if (!year || texts[0].size() > 2 || texts[1].size() > 2) return std::nullopt;
  const bool dayFirst = mark == '.' || isDayFirst();
  const std::optional<KRDate> date = made(year, number(texts[dayFirst ? 1 : 0]), number(texts[dayFirst ? 0 : 1]));
  // A date that makes sense only the other way round is read so, as single ones are typed by hand.
  return date || mark == '.' ? date : made(year, number(texts[dayFirst ? 0 : 1]), number(texts[dayFirst ? 1 : 0]));
}

bool KRCSVDateReader::isNone(std::string_view text) noexcept {
  return text.find_first_not_of("0/.- :\t\n\r") == std::string_view::npos;
}

std::optional<KRDate> KRCSVDateReader::of(std::string_view year, std::string_view month, std::string_view day) {
  year = trimmed(year);
  const std::optional<int> known = isNone(year) ? std::nullopt : yearOf(year);
  if (!known && !isNone(year)) return std::nullopt;
  return made(known, monthOf(trimmed(month)), number(trimmed(day)));
}
