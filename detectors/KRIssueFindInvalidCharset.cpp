#include "detectors/KRIssueFindInvalidCharset.h"

#include <array>
#include <string>

#include "detectors/KRSinglePersonScan.h"
#include "platform/KRSupportFuction.h"

namespace {

/// Whether a byte may stand in a phone number.
constexpr std::array<bool, 256> kAllowedInPhone = [] {
  std::array<bool, 256> table{};
  for (const char byte : std::string_view("0123456789 ()+-\xA0")) table[static_cast<unsigned char>(byte)] = true;
  return table;
}();

bool isValidPhone(KRText phone) {
  // Plain ASCII, what nearly all numbers are, has a byte for every code unit.
  const std::string_view bytes = phone.view();
  for (const char each : bytes) {
    const auto byte = static_cast<unsigned char>(each);
    if (byte >= 0x80) return phone.allUnits([](char16_t unit) { return kAllowedInPhone[unit & 0xFFU]; });
    if (!kAllowedInPhone[byte]) return false;
  }
  return true;
}

KRStringList invalidEmails(const IKRPerson& person, KRHold& hold) {
  KRStringList invalid;
  person.readTexts(KROrdinal::Email, hold, [&](KRText text) {
    if (!text.isNothing() && !text.contains('@')) invalid.emplace_back(text);
    return true;
  });
  return invalid;
}

KRStringList invalidPhones(const IKRPerson& person, KRHold& hold) {
  KRStringList invalid;
  person.readTexts(KROrdinal::Phone, hold, [&](KRText text) {
    if (!isValidPhone(text)) invalid.emplace_back(text);
    return true;
  });
  return invalid;
}

KRRef<KRValueMap> infoOf(const KRStringList& phones, const KRStringList& emails) {
  auto info = krMake<KRValueMap>();
  if (!emails.empty()) info->set("email"_kr, KRValueList::ofTexts(emails));
  if (!phones.empty()) info->set("phone"_kr, KRValueList::ofTexts(phones));
  return info;
}

void appendQuoted(std::string& text, const KRStringList& values, std::string_view separator) {
  for (size_t i = 0; i < values.size(); ++i) {
    if (i > 0) text.append(separator);
    text.append("\"").append(values[i].view()).append("\"");
  }
}

}  // namespace

KRRef<KRIssueContext> KRIssueFindInvalidCharset::find(const KRPersonList* persons, const KRProgress& progress) {
  return krScanSinglePersons(
      issue(), persons, progress,
      [this](IKRPerson& person, KRHold& hold) -> KRRef<KRIssueObject> {
        const KRStringList emails = invalidEmails(person, hold);
        const KRStringList phones = invalidPhones(person, hold);
        if (emails.empty() && phones.empty()) return {};
        return krFindingAboutPerson(&person, describeString(phones, emails), KRValue(infoOf(phones, emails)));
      },
      std::nullopt, KRScanCount::FromOne);
}

KRRef<KRIssueObject> KRIssueFindInvalidCharset::objectForPerson(IKRPerson* person) const {
  return krFindingAboutPerson(person, KRSupportFuction::loadString("KR_Issue_Info_InvalidCharset"_kr));
}

KRString KRIssueFindInvalidCharset::describeString(const KRStringList& phones, const KRStringList& email) const {
  std::string text = "This Contact's ";
  if (!phones.empty()) {
    text.append("phone number ");
    appendQuoted(text, phones, ", ");
  }
  if (!email.empty()) {
    text.append(phones.empty() ? "email address " : " and email address ");
    appendQuoted(text, email, "\u3001");
  }
  text.append(" includes invalid characters.");
  return KRString::trusted(text);
}
