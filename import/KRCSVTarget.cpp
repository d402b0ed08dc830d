#include "import/KRCSVTarget.h"

#include <algorithm>

#include "platform/KRASCII.h"

namespace {

using Part = KRCSVTarget::Part;

struct Row {
  KRString name;
  KRCSVTarget target;
};

#define KR_ENTRIES(name, ordinal)                                                                          \
  {name##_kr, {KROrdinal::ordinal, Part::Whole}}, {name ".label"_kr, {KROrdinal::ordinal, Part::Label}}, { \
    name ".main"_kr, {                                                                                     \
      KROrdinal::ordinal, Part::Main                                                                       \
    }                                                                                                      \
  }

constexpr Row kRows[] = {
    {"ignore"_kr, {KROrdinal::Other, Part::Ignored}},
    {"name"_kr, {KROrdinal::Name, Part::Whole}},
    {"firstName"_kr, {KROrdinal::Name, Part::First}},
    {"middleName"_kr, {KROrdinal::Name, Part::Middle}},
    {"lastName"_kr, {KROrdinal::Name, Part::Last}},
    {"phoneticFirstName"_kr, {KROrdinal::PhoneticFirstName, Part::Whole}},
    {"phoneticMiddleName"_kr, {KROrdinal::PhoneticMiddleName, Part::Whole}},
    {"phoneticLastName"_kr, {KROrdinal::PhoneticLastName, Part::Whole}},
    {"nickname"_kr, {KROrdinal::Nickname, Part::Whole}},
    KR_ENTRIES("phone", Phone),
    KR_ENTRIES("email", Email),
    KR_ENTRIES("address", Address),
    {"address.poBox"_kr, {KROrdinal::Address, Part::PostOfficeBox}},
    {"address.extended"_kr, {KROrdinal::Address, Part::Extended}},
    {"address.street"_kr, {KROrdinal::Address, Part::Street}},
    {"address.city"_kr, {KROrdinal::Address, Part::City}},
    {"address.region"_kr, {KROrdinal::Address, Part::Region}},
    {"address.postalCode"_kr, {KROrdinal::Address, Part::PostalCode}},
    {"address.country"_kr, {KROrdinal::Address, Part::Country}},
    {"address.countryCode"_kr, {KROrdinal::Address, Part::CountryCode}},
    KR_ENTRIES("instantMessage", InstantMessage),
    {"instantMessage.service"_kr, {KROrdinal::InstantMessage, Part::Service}},
    {"company"_kr, {KROrdinal::Company, Part::Whole}},
    {"department"_kr, {KROrdinal::Department, Part::Whole}},
    {"jobTitle"_kr, {KROrdinal::JobTitle, Part::Whole}},
    {"role"_kr, {KROrdinal::Role, Part::Whole}},
    {"title"_kr, {KROrdinal::Title, Part::Whole}},
    {"suffix"_kr, {KROrdinal::Suffix, Part::Whole}},
    {"birthday"_kr, {KROrdinal::Birthday, Part::Whole}},
    {"birthday.year"_kr, {KROrdinal::Birthday, Part::Year}},
    {"birthday.month"_kr, {KROrdinal::Birthday, Part::Month}},
    {"birthday.day"_kr, {KROrdinal::Birthday, Part::Day}},
    KR_ENTRIES("url", URL),
    KR_ENTRIES("otherDate", OtherDate),
    {"otherDate.year"_kr, {KROrdinal::OtherDate, Part::Year}},
    {"otherDate.month"_kr, {KROrdinal::OtherDate, Part::Month}},
    {"otherDate.day"_kr, {KROrdinal::OtherDate, Part::Day}},
    KR_ENTRIES("relatedName", RelatedName),
    KR_ENTRIES("socialProfile", SocialProfile),
    {"note"_kr, {KROrdinal::Note, Part::Whole}},
    {"tags"_kr, {KROrdinal::Tags, Part::Whole}},
    {"thumbnail"_kr, {KROrdinal::Thumbnail, Part::Whole}},
    {"isOrganization"_kr, {KROrdinal::IsOrganization, Part::Whole}},
    KR_ENTRIES("other", Other),
    {"other.default"_kr, {KROrdinal::Other, Part::Default}},
};

#undef KR_ENTRIES

}  // namespace

KRString KRCSVTarget::name() const noexcept {
  const auto* row = std::find_if(std::begin(kRows), std::end(kRows), [&](const Row& each) {
    return part == Part::Ignored ? each.target.part == part : each.target == *this;
  });
  return row == std::end(kRows) ? KRString() : row->name;
}

std::optional<KRCSVTarget> KRCSVTarget::named(KRText name) {
  const auto* row = std::find_if(std::begin(kRows), std::end(kRows),
                                 [&](const Row& each) { return krEqualsIgnoringCase(each.name.view(), name.view()); });
  return row == std::end(kRows) ? std::nullopt : std::optional(row->target);
}

KRStringList KRCSVTarget::names() {
  KRStringList list;
  for (const Row& row : kRows) list.push_back(row.name);
  return list;
}
