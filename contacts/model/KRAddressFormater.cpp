#include "contacts/model/KRAddressFormater.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "contacts/model/KRCountry.h"
#include "contacts/model/KRStoredReading.h"

namespace {

using Field = KRAddressField;
using Order = std::array<Field, kKRAddressFieldCount>;

/// Street, city, region, postal code: the English-speaking countries and all that no other row names.
constexpr Order kCodeBehindCity = {Field::Street, Field::Extended,   Field::PostOfficeBox, Field::City,
                                   Field::Region, Field::PostalCode, Field::Country};
/// Street, then postal code and city: most of Europe and Latin America.
constexpr Order kCodeBeforeCity = {Field::Street, Field::Extended, Field::PostOfficeBox, Field::PostalCode,
                                   Field::City,   Field::Region,   Field::Country};
/// City before street, postal code behind: Hungary.
constexpr Order kCityBeforeStreet = {Field::City,       Field::Street, Field::Extended, Field::PostOfficeBox,
                                     Field::PostalCode, Field::Region, Field::Country};
/// From the large to the small, beginning with the postal code: Japan, Korea, Taiwan.
constexpr Order kCodeThenLargeFirst = {Field::Country, Field::PostalCode, Field::Region,       Field::City,
                                       Field::Street,  Field::Extended,   Field::PostOfficeBox};
/// From the large to the small, the postal code last: mainland China.
constexpr Order kLargeFirst = {Field::Country,  Field::Region,        Field::City,      Field::Street,
                               Field::Extended, Field::PostOfficeBox, Field::PostalCode};

struct Family {
  std::string_view countries;
  const Order* order;
};

constexpr Family kFamilies[] = {
    {"AR AT BE BG BO CH CL CR CU CZ DE DK DO DZ EC EE ES FI FR GL GR GT HN HR IL IS IT LI LT LU MA MC ME MK MX NI NL "
     "NO "
     "PL PT PY RO RS SE SI SK SM SN SV TN TR UY VA",
     &kCodeBeforeCity},
    {"HU", &kCityBeforeStreet},
    {"JP KR TW", &kCodeThenLargeFirst},
    {"CN", &kLargeFirst},
    {"", &kCodeBehindCity},
};

/// The place of a country's family in the table; the last row takes what no other names.
size_t familyOf(std::string_view country) {
  const auto* last = std::end(kFamilies) - 1;
  return static_cast<size_t>(
      std::find_if(std::begin(kFamilies), last,
                   [&](const Family& family) { return family.countries.find(country) != std::string_view::npos; }) -
      std::begin(kFamilies));
}

using Items = std::vector<const KRAddressFieldItem*>;

Items itemsInOrder(const Order& order) {
  static constexpr std::array<KRAddressFieldItem, kKRAddressFieldCount> items = {
      KRAddressFieldItem(Field::PostOfficeBox), KRAddressFieldItem(Field::Extended),
      KRAddressFieldItem(Field::Street),        KRAddressFieldItem(Field::City),
      KRAddressFieldItem(Field::Region),        KRAddressFieldItem(Field::PostalCode),
      KRAddressFieldItem(Field::Country)};
  Items list;
  for (const Field field : order) list.push_back(&items[static_cast<size_t>(field)]);
  return list;
}

/// What a character is written as when it cannot stand for itself; nothing for all others.
std::string_view escaped(char c) noexcept {
  switch (c) {
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\t':
      return "\\t";
    case ',':
      return "\\,";
    case ':':
      return "\\:";
    case '\\':
      return "\\\\";
    default:
      return {};
  }
}

/// Marks what separates fields and names, so that no text can pass for two fields, and writes what would break the line
/// or a key that is cut at tabs.
void appendEscaped(std::string& to, std::string_view text) {
  static constexpr auto kIsEscaped = [] {
    std::array<bool, 256> table{};
    for (const char c : std::string_view("\n\r\t,:\\")) table[static_cast<unsigned char>(c)] = true;
    return table;
  }();
  const auto isEscaped = [](char c) { return kIsEscaped[static_cast<unsigned char>(c)]; };
  while (true) {
    const auto* const mark = std::find_if(text.begin(), text.end(), isEscaped);
    const auto plain = static_cast<size_t>(mark - text.begin());
    to.append(text.data(), plain);
    if (mark == text.end()) return;
    to.append(escaped(*mark));
    text.remove_prefix(plain + 1);
  }
}

/// `start` is where the line begins in the text.
void appendField(std::string& to, size_t start, KRText name, KRText value) {
  if (value.isEmpty()) return;
  if (to.size() > start) to += ", ";
  appendEscaped(to, name.view());
  to += ": ";
  appendEscaped(to, value.view());
}

}  // namespace

const std::vector<const KRAddressFieldItem*>& KRAddressFormater::fieldArrayLocal() {
  static const auto* const lists = [] {
    auto* made = new std::array<Items, std::size(kFamilies)>;
    for (size_t i = 0; i < std::size(kFamilies); ++i) (*made)[i] = itemsInOrder(*kFamilies[i].order);
    return made;
  }();
  return (*lists)[familyOf(KRCountry::local()->code().view())];
}

KRString KRAddressFormater::formatString() const {
  if (!address_) return ""_kr;
  std::string line;
  append(line, krAddressView(*address_));
  return KRString::trusted(line);
}

void KRAddressFormater::append(std::string& to, const KRAddressView& address) {
  const size_t start = to.size();
  // One order for all users: the text stands in keys, and the same address has the same key everywhere.
  for (const Field field : kCodeBehindCity) {
    const auto place = static_cast<size_t>(field);
    appendField(to, start, kKRAddressFieldNames[place], address.fields[place]);
  }
  if (address.further == nullptr) return;
  for (const KRObjectAddress::Field& field : *address.further) appendField(to, start, field.name, field.value);
}
