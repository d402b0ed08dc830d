#pragma once

#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/KRTempPerson.h"
#include "contacts/model/KRObjectEmail.h"
#include "contacts/model/KRObjectPhone.h"
#include "tests/contacts/vcard/VCardSamples.h"

/// Random persons that a card can hold whole: what is empty, or not told apart by any card, does not come up.
class KRWrittenPersons {
 public:
  explicit KRWrittenPersons(uint32_t seed) : random_(seed) {}

  size_t below(size_t limit) { return std::uniform_int_distribution<size_t>(0, limit - 1)(random_); }
  bool chance(size_t of) { return below(of) == 0; }

  /// Text that is not empty, with everything that the format must escape, fold or encode.
  KRString text() {
    static const std::vector<std::string> pieces = {"Ann",
                                                    "Lee",
                                                    ";",
                                                    ",",
                                                    ":",
                                                    "\\",
                                                    "\n",
                                                    "=",
                                                    "=41",
                                                    "\xC3\xA9",
                                                    "\xE7\x8E\x8B",
                                                    "\\n",
                                                    "\\;",
                                                    "\\,",
                                                    " ",
                                                    "\t",
                                                    "\"",
                                                    "'",
                                                    "%41",
                                                    "END:VCARD",
                                                    "tel:",
                                                    "mailto:",
                                                    "\xF0\x9F\x98\x80",
                                                    "//",
                                                    "?chat",
                                                    "http://x.example/?a=1&b=2",
                                                    "^",
                                                    "~",
                                                    "BEGIN:VCARD",
                                                    ".",
                                                    "a long piece of text without any sense at all",
                                                    "\xE5\xB1\xB1\xE5\xA4\xAA\xE9\x83\x8E\xE3\x81\xAE\xE5\xAE\xB6"};
    std::string text;
    for (size_t count = 1 + below(chance(5) ? 40 : 6); count > 0; --count) text += pieces[below(pieces.size())];
    return KRString(text);
  }

  KRString label() {
    static const std::vector<std::string> labels = {
        "home", "work",        "mobile", "work fax",     "Home",   "fax home", "other",     "Ferien", "voice",
        "pref", "anniversary", "spouse", "_$!<Home>!$_", "iPhone", "twitter",  "home work", "Spouse"};
    return chance(4) ? text() : KRString(labels[below(labels.size())]);
  }

  KRDate date() {
    static const std::vector<int> years = {1, 1583, 1900, 1980, 1999, 2024, 9999};
    while (true) {
      const std::optional<int> year = chance(3) ? std::nullopt : std::optional<int>(years[below(years.size())]);
      const auto made = KRDate::make(year, static_cast<int>(below(12)) + 1, static_cast<int>(below(31)) + 1);
      if (made) return *made;
    }
  }

  KRRef<KRTempPerson> person() {
    auto person = krMake<KRTempPerson>(KRString("id-" + std::to_string(below(1000000))));
    for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
      if (chance(3)) person->setValue(stored(*property), property->name());
    }
    return person;
  }

  KRRef<KRStoredValue> stored(const KRProperty& property) {
    if (property.isMultiple()) {
      auto multiple = krMake<KRMutableMultipleValue>();
      for (size_t count = 1 + below(4); count > 0; --count) {
        multiple->addValue(krMake<KRMutableSingleValue>(value(property.subValueType()),
                                                        chance(3) ? KRRef<KRLabel>() : krMake<KRLabel>(label()),
                                                        property.subValueType()));
      }
      if (chance(2)) multiple->setMainIndex(below(multiple->count()));
      return multiple;
    }
    if (property.ordinal() == KROrdinal::IsOrganization) return krSingleValue("YES"_kr, property);
    return krSingleValue(value(property.valueType()), property);
  }

 private:
  KRValue value(int32_t type) {
    switch (type) {
      case KRValueType::Date:
        return date();
      case KRValueType::PersonName: {
        // A part that is nothing and one that is empty are the same in a card.
        const auto part = [&] { return chance(3) ? KRString() : text(); };
        return krMake<KRObjectPersonName>(text(), part(), part());
      }
      case KRValueType::Phone:
        return krMake<KRObjectPhone>(text());
      case KRValueType::Email:
        return krMake<KRObjectEmail>(text());
      case KRValueType::Address: {
        auto address = krMake<KRObjectAddress>();
        if (chance(2)) address->setCountryCode("de"_kr);
        address->setStringValue(text(), kKRAddressFieldNames[below(kKRAddressFieldCount)]);
        address->setStringValue(text(), kKRAddressFieldNames[below(kKRAddressFieldCount)]);
        return address;
      }
      case KRValueType::TextList: {
        std::vector<KRValue> texts;
        for (size_t count = 1 + below(3); count > 0; --count) texts.emplace_back(text());
        return KRRef<KRObject>(krMake<KRValueList>(texts));
      }
      case KRValueType::Data: {
        static const std::vector<std::string> starts = {"\xFF\xD8\xFF", "\x89PNG", "GIF8", "x"};
        std::string bytes = starts[below(starts.size())];
        for (size_t count = below(200); count > 0; --count) bytes.push_back(static_cast<char>(below(256)));
        return krMake<KRData>(bytes);
      }
      case KRValueType::InstantMessage: {
        static const std::vector<std::string> services = {"skype", "xmpp", "icq", "own service", "x-new", "aim", "sip"};
        const auto* service = &services[below(services.size())];
        return krMake<KRObjectInstantMessage>(
            text(), chance(4) ? nullptr : KRInstantMessageServer::serverWithName(KRText(std::string_view(*service))));
      }
      default:
        return text();
    }
  }

  std::mt19937 random_;
};

/// The places of the main entries of all multiple values, as text.
inline std::string krMainEntries(const IKRPerson& person) {
  std::string text;
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    const auto stored = person.valueByProperty(property);
    const auto* multiple = dynamic_cast<const KRMutableMultipleValue*>(stored.get());
    if (multiple == nullptr || multiple->count() == 0) continue;
    size_t place = 0;
    while (multiple->valueAtIndex(place) != multiple->mainValue()) ++place;
    text.append(property->name().view()).append(" ").append(std::to_string(place)).append("\n");
  }
  return text;
}
