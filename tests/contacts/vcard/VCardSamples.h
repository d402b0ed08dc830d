#pragma once

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/model/KRObjectAddress.h"
#include "contacts/model/KRObjectInstantMessage.h"
#include "contacts/model/KRObjectPersonName.h"
#include "contacts/vcard/KRVCardBook.h"

// Cards made by hand, and what a person shows as lines of text, "phone[work fax]: 030 123", in two ways: through the
// reading interface and through the stored values.

/// The lines as a card, with CRLF behind each.
inline std::string krCard(const std::vector<std::string>& lines, std::string_view version = "3.0") {
  std::string text = "BEGIN:VCARD\r\n";
  if (!version.empty()) text.append("VERSION:").append(version).append("\r\n");
  for (const std::string& line : lines) text.append(line).append("\r\n");
  return text + "END:VCARD\r\n";
}

struct KRCardsRead {
  KRRef<KRVCardBook> book;
  KRVCardBook::Summary summary;
  std::vector<KRVCardNote> notes;

  size_t count() const { return book->allPersonsCount(); }
  const ABPerson& person(size_t index) const { return static_cast<const ABPerson&>(*book->allPersons().at(index)); }
};

inline KRCardsRead krReadCards(std::string_view bytes) {
  KRCardsRead result{krMake<KRVCardBook>("book"_kr, "Book"_kr), {}, {}};
  result.summary = result.book->addBytes(bytes, [&](const KRVCardNote& note) { result.notes.push_back(note); });
  return result;
}

namespace vcardsamples {

inline std::string printable(KRText text) {
  std::string shown;
  for (const char c : text.view()) {
    if (c == '\n') {
      shown.append("\\n");
    } else {
      shown.push_back(c);
    }
  }
  return shown;
}

inline void line(std::string& shown, std::string_view what, KRText label, std::string_view value) {
  shown.append(what);
  if (!label.isNothing()) shown.append("[").append(printable(label)).append("]");
  shown.append(": ").append(value).append("\n");
}

inline void part(std::string& shown, std::string_view what, KRText text) {
  if (!text.isNothing()) line(shown, what, {}, printable(text));
}

inline std::string addressText(KRText code, const std::vector<KRText>& fields) {
  std::string text = code.isNothing() ? "" : "(" + printable(code) + ") ";
  for (size_t i = 0; i < fields.size(); ++i) {
    if (fields[i].isNothing()) continue;
    text.append(kKRAddressFieldNames[i].view()).append("=").append(printable(fields[i])).append(";");
  }
  return text;
}

inline std::string accountText(KRText server, KRText user) {
  return (server.isNothing() ? "" : printable(server) + " ") + printable(user);
}

inline std::string valueText(const KRValue& value) {
  if (const auto* phone = value.as<KRObjectPhone>()) return printable(phone->phoneNumber());
  if (const auto* email = value.as<KRObjectEmail>()) return printable(email->email());
  if (const auto* account = value.as<KRObjectInstantMessage>()) {
    return accountText(account->server() == nullptr ? KRText() : account->server()->name().text(), account->userName());
  }
  if (const auto* address = value.as<KRObjectAddress>()) {
    std::vector<KRText> fields;
    for (const KRString& field : address->standardFields()) fields.push_back(field);
    return addressText(address->countryCode(), fields);
  }
  return printable(value.description());
}

inline void values(std::string& shown, const KRProperty& property, const KRStoredValue& stored) {
  const std::string name(property.name().view());
  if (const auto* multiple = dynamic_cast<const KRMutableMultipleValue*>(&stored)) {
    for (size_t i = 0; i < multiple->count(); ++i) {
      const KRMutableSingleValue& entry = *multiple->valueAtIndex(i);
      const KRRef<KRLabel> label = entry.label();
      line(shown, name, label ? label->name().text() : KRText(), valueText(entry.value()));
    }
    return;
  }
  const KRValue& value = static_cast<const KRMutableSingleValue&>(stored).value();
  if (const auto* whole = value.as<KRObjectPersonName>()) {
    part(shown, "last", whole->last());
    part(shown, "first", whole->first());
    part(shown, "middle", whole->middle());
  } else if (const auto* list = value.as<KRValueList>()) {
    for (const KRString& text : list->texts()) line(shown, name, {}, printable(text));
  } else if (const auto* data = value.as<KRData>()) {
    line(shown, name, {}, std::to_string(data->bytes().size()) + " bytes");
  } else {
    line(shown, name, {}, valueText(value));
  }
}

inline void readings(std::string& shown, const KRProperty& property, const IKRPerson& person, KRHold& hold) {
  const std::string name(property.name().view());
  const KROrdinal ordinal = property.ordinal();
  if (ordinal == KROrdinal::Name) {
    const KRNameView view = person.readName(hold);
    if (!view.isPresent) return;
    part(shown, "last", view.last);
    part(shown, "first", view.first);
    part(shown, "middle", view.middle);
  } else if (ordinal == KROrdinal::Thumbnail) {
    const KRRef<KRData> image = person.imageData();
    if (image) line(shown, name, {}, std::to_string(image->bytes().size()) + " bytes");
  } else if (property.isMultiple() || property.valueType() == KRValueType::TextList) {
    person.readEntries(ordinal, hold, [&](const KREntryView& entry) {
      if (entry.address != nullptr) {
        const std::vector<KRText> fields(entry.address->fields.begin(), entry.address->fields.end());
        line(shown, name, entry.label, addressText(entry.address->countryCode, fields));
      } else if (ordinal == KROrdinal::InstantMessage) {
        line(shown, name, entry.label, accountText(entry.server, entry.text));
      } else {
        line(shown, name, entry.label, printable(entry.text));
      }
      return true;
    });
  } else {
    part(shown, name, person.readText(ordinal, hold));
  }
}

}  // namespace vcardsamples

inline std::string krShownByReading(const IKRPerson& person) {
  std::string shown;
  KRHold hold;
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    vcardsamples::readings(shown, *property, person, hold);
  }
  return shown;
}

inline std::string krShownByValues(const IKRPerson& person) {
  std::string shown;
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    const KRRef<KRStoredValue> stored = person.valueByProperty(property);
    if (stored) vcardsamples::values(shown, *property, *stored);
  }
  return shown;
}

/// What the only card among the lines shows.
inline std::string krShown(const std::vector<std::string>& lines, std::string_view version = "3.0") {
  const KRCardsRead read = krReadCards(krCard(lines, version));
  if (read.count() != 1) return "contacts: " + std::to_string(read.count());
  return krShownByReading(read.person(0));
}

/// A card with something of everything, for tests that cut and change it.
inline std::string krRichCard(std::string_view version) {
  return krCard({"N:Weber;Jörg;Karl,Maria;Dr.;jun.",
                 "FN:Dr. Jörg Weber",
                 "X-PHONETIC-FIRST-NAME:Yörk",
                 "NICKNAME:Jo",
                 "ORG:Weber & Söhne;Einkauf;West",
                 "TITLE:Leiter\\, Einkauf",
                 "ROLE;ENCODING=QUOTED-PRINTABLE:Eink=C3=A4u=",
                 "fer",
                 "TEL;TYPE=WORK,FAX;PREF=1:tel:+49-30-1234567",
                 "item1.TEL:0170 7654321",
                 "item1.X-ABLabel:_$!<Home>!$_",
                 "EMAIL;TYPE=\"HOME,INTERNET\":joerg@example.org",
                 "item2.ADR;TYPE=HOME:;;Lange Straße 5;Berlin;;10115;Deutschland",
                 "item2.X-ABADR:de",
                 "IMPP;X-SERVICE-TYPE=Skype;TYPE=HOME:skype:joerg.weber",
                 "URL:https\\://www.example.org/joerg",
                 "BDAY:1980-02-29",
                 "ANNIVERSARY:--0704",
                 "item3.X-ABRELATEDNAMES:Anna",
                 "item3.X-ABLabel:_$!<Spouse>!$_",
                 "CATEGORIES:Freunde,Kegel\\, Klub",
                 "NOTE:Eine lange Notiz\\nmit zwei Zeilen und einem Umbruch an einer dum",
                 " men Stelle",
                 "PHOTO;ENCODING=b;TYPE=PNG:iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJ",
                 " AAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5ErkJggg==",
                 "UID:5f2a",
                 "X-UNKNOWN;X-P=1:kept"},
                version);
}

/// A card of random lines of every kind, well-formed or nearly so.
inline std::string krRandomCard(std::mt19937& random) {
  static const std::vector<std::string> heads = {"N",
                                                 "FN",
                                                 "NICKNAME",
                                                 "ORG",
                                                 "TITLE",
                                                 "ROLE",
                                                 "NOTE",
                                                 "TEL;TYPE=CELL",
                                                 "TEL",
                                                 "EMAIL",
                                                 "TEL;HOME",
                                                 "EMAIL;PREF=2",
                                                 "ADR",
                                                 "BDAY",
                                                 "CATEGORIES",
                                                 "ADR;TYPE=WORK,PREF",
                                                 "X-ABDATE",
                                                 "URL",
                                                 "item1.TEL",
                                                 "item1.X-ABLabel",
                                                 "UID",
                                                 "KIND",
                                                 "X-ABShowAs",
                                                 "item2.ADR",
                                                 "X-AIM",
                                                 "IMPP",
                                                 "item2.X-ABADR",
                                                 "PHOTO;ENCODING=b",
                                                 "RELATED;TYPE=friend",
                                                 "NOTE;ENCODING=QUOTED-PRINTABLE",
                                                 "X-PHONETIC-LAST-NAME",
                                                 "PHOTO",
                                                 "X-SOCIALPROFILE;type=x",
                                                 "ANNIVERSARY",
                                                 "SOUND;X-IRMC-N"};
  static const std::vector<std::string> pieces = {
      "Ann",        "Lee",  ";",       ",",     "\\,",         "\\n", "=41", "\xC3\xA9", "\xE7\x8E\x8B",
      "1990-01-02", "tel:", "COMPANY", "org",   "a@b.example", " ",   "+49", "QUJD",     "data:image/png;base64,QUJD",
      "xmpp:",      "\\",   "\xFC",    "--0304"};
  const auto below = [&](size_t limit) { return std::uniform_int_distribution<size_t>(0, limit - 1)(random); };
  std::vector<std::string> lines;
  for (size_t count = below(20); count > 0; --count) {
    std::string text = heads[below(heads.size())] + ":";
    for (size_t words = below(7); words > 0; --words) text += pieces[below(pieces.size())];
    if (below(6) == 0) text.insert(1 + below(text.size()), "\r\n ");
    lines.push_back(text);
  }
  static const std::vector<std::string> versions = {"2.1", "3.0", "4.0", ""};
  return krCard(lines, versions[below(versions.size())]);
}
