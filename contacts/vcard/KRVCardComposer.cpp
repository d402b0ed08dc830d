#include "contacts/vcard/KRVCardComposer.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "contacts/model/ABPerson.h"
#include "contacts/model/KRCardValues.h"
#include "contacts/model/KRInstantMessageServer.h"
#include "contacts/model/KRLabelTable.h"
#include "contacts/model/KRMutableMultipleValue.h"
#include "contacts/model/KRObjectPersonName.h"
#include "contacts/vcard/KRVCardEscapes.h"
#include "contacts/vcard/KRVCardMemo.h"
#include "contacts/vcard/KRVCardNames.h"
#include "contacts/vcard/KRVCardParameters.h"
#include "contacts/vcard/KRVCardProperty.h"
#include "contacts/vcard/KRVCardText.h"
#include "contacts/vcard/KRVCardValues.h"

namespace {

using V = KRVCardVersion;
using O = KROrdinal;

std::string upper(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - ('a' - 'A'));
  }
  return result;
}

/// The value of a parameter, in quotes where it needs them.
std::string parameterValue(std::string_view value) {
  const bool isPlain = !value.empty() && std::all_of(value.begin(), value.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
  });
  if (isPlain) return std::string(value);
  std::string text = "\"";
  for (const char c : value) {
    // As RFC 6868 writes what would end the parameter or the line.
    if (c == '"' || c == '^' || c == '\n') {
      text.append({'^', c == '"' ? '\'' : c == '^' ? '^' : 'n'});
    } else {
      text.push_back(c);
    }
  }
  return text + "\"";
}

bool isPlainToken(std::string_view text) noexcept {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-';
  });
}

std::string typeParameter(const std::vector<std::string>& types, KRVCardVersion version, bool areBare) {
  std::string text;
  for (const std::string& type : types) {
    if (areBare) {
      text.append(";").append(upper(type));
    } else {
      text.append(text.empty() ? ";TYPE=" : ",").append(version == V::V40 ? type : upper(type));
    }
  }
  return text;
}

/// Whether the reader takes these parameters for that label.
bool meanLabel(std::string_view parameters, KRText label) {
  const KRVCardParameters parsed = krParseParameters(parameters);
  if (parsed.label != 0) return KRLabelTable::name(parsed.label) == label;
  return label.isEmpty() ? parsed.labelText.isEmpty() : parsed.labelText == label;
}

/// The parameters that make the reader see that label; nothing when none do.
std::optional<std::string> parametersOf(KROrdinal property, KRText label, KRVCardVersion version) {
  const std::string_view allowed = krKnownTypes(property, version);
  std::vector<std::string> types;
  const std::string_view name = label.view();
  for (size_t at = 0; at <= name.size();) {
    const size_t end = std::min(name.find(' ', at), name.size());
    std::string type(name.substr(at, end - at));
    at = end + 1;
    if (type == "mobile") type = "cell";
    const bool isAllowed = property == O::SocialProfile
                               ? isPlainToken(type)
                               : isPlainToken(type) && allowed.find(" " + type + " ") != std::string_view::npos;
    if (!isAllowed) return std::nullopt;
    types.push_back(type);
  }
  std::string text = typeParameter(types, version, version == V::V21 && property != O::SocialProfile);
  return meanLabel(text, label) ? std::optional(std::move(text)) : std::nullopt;
}

KRText nonEmpty(KRText text) noexcept {
  return text.isEmpty() ? KRText("") : text;
}

}  // namespace

void KRVCardComposer::takeGroup(std::string_view name) {
  if (!name.empty()) taken_.insert(krLowerASCII(name));
}

std::string KRVCardComposer::freshGroup() {
  while (true) {
    std::string name = "item" + std::to_string(++lastGroup_);
    if (taken_.insert(name).second) return name;
  }
}

bool KRVCardComposer::hasNameParts(const IKRPerson& person) {
  KRHold hold;
  const KRNameView name = person.readName(hold);
  return !name.first.isEmpty() || !name.middle.isEmpty() || !name.last.isEmpty() ||
         !person.readText(O::Title, hold).isEmpty() || !person.readText(O::Suffix, hold).isEmpty();
}

std::optional<size_t> KRVCardComposer::mainEntry(const IKRPerson& person, KROrdinal property) {
  const auto* record = dynamic_cast<const ABPerson*>(&person);
  if (record == nullptr || record->isChanged(property)) {
    const KRRef<KRStoredValue> stored = person.valueByProperty(KRProperty::propertyWithOrdinal(property));
    const auto* multiple = dynamic_cast<const KRMutableMultipleValue*>(stored.get());
    return multiple != nullptr ? multiple->mainIndex() : std::nullopt;
  }
  // Not asked for its stored value, which it would keep.
  std::optional<size_t> main;
  size_t index = 0;
  krForRows(record->record(), property, [&](const KRCardRow& row, std::span<const KRCardRow>) {
    if ((row.detail & KRCardRow::kMain) != 0) main = index;
    ++index;
    return !main;
  });
  return main;
}

KRVCardNewLine KRVCardComposer::name(const IKRPerson& person, const KRVCardRemainder& remainder) const {
  KRHold hold;
  const KRNameView name = person.readName(hold);
  KRVCardNewLine line{remainder.group, "N", remainder.parameters, {}};
  for (const KRText part :
       {name.last, name.first, name.middle, person.readText(O::Title, hold), person.readText(O::Suffix, hold)}) {
    line.value.append(krEscapePart(part.view(), version_)).push_back(';');
  }
  line.value.pop_back();
  line.value += remainder.parts;
  return line;
}

KRVCardNewLine KRVCardComposer::formattedName(const IKRPerson& person, const KRVCardRemainder& remainder) const {
  KRHold hold;
  const KRText company = person.readText(O::Company, hold);
  std::string shown;
  const auto add = [&](std::string_view text) {
    if (!shown.empty() && !text.empty()) shown.push_back(' ');
    shown += text;
  };
  // Without a company the reader takes this text for the company of an organisation, and without a name for that of a
  // person: then there is none.
  if (person.isOrganization() || !hasNameParts(person)) {
    add(company.view());
  } else {
    const KRNameView name = person.readName(hold);
    add(person.readText(O::Title, hold).view());
    add(KRObjectPersonName::displayString(nonEmpty(name.first), nonEmpty(name.middle), nonEmpty(name.last)).view());
    add(person.readText(O::Suffix, hold).view());
  }
  return {remainder.group, "FN", remainder.parameters, krEscapeText(shown, version_)};
}

KRVCardNewLine KRVCardComposer::organisation(const IKRPerson& person, const KRVCardRemainder& remainder) const {
  KRHold hold;
  const KRText department = person.readText(O::Department, hold);
  KRVCardNewLine line{remainder.group, "ORG", remainder.parameters, {}};
  line.value = krEscapePart(person.readText(O::Company, hold).view(), version_);
  if (!department.isEmpty() || !remainder.parts.empty()) {
    line.value.append(";").append(krEscapePart(department.view(), version_));
  }
  line.value += remainder.parts;
  return line;
}

KRVCardNewLine KRVCardComposer::organisationMark() const {
  if (version_ == V::V40) return {{}, "KIND", {}, "org"};
  return {{}, "X-ABShowAs", {}, "COMPANY"};
}

KRVCardNewLine KRVCardComposer::text(KROrdinal property, KRText text, const KRVCardRemainder& remainder) const {
  return {remainder.group, remainder.name.empty() ? krTextLineName(property) : remainder.name, remainder.parameters,
          krEscapeText(text.view(), version_)};
}

void KRVCardComposer::setDate(KRText date, KRVCardNewLine& line) const {
  const std::optional<KRDate> known = krParseCardDate(date.view());
  if (!known) {
    if (version_ != V::V21) line.parameters += ";VALUE=text";
    line.value = krEscapeText(date.view(), version_);
    return;
  }
  line.value = krDateText(*known);
  if (version_ == V::V40) {
    // The only form that this version has: without dashes but those of a year that is not known.
    const size_t from = known->hasYear() ? 0 : 2;
    line.value.erase(std::remove(line.value.begin() + static_cast<std::ptrdiff_t>(from), line.value.end(), '-'),
                     line.value.end());
  } else if (version_ == V::V30 && !known->hasYear()) {
    // This version has no date without a year; phones and desktops agree on a stand-in.
    line.parameters += ";X-APPLE-OMIT-YEAR=1604";
    line.value = "1604" + line.value.substr(1);
  }
}

KRVCardNewLine KRVCardComposer::birthday(KRText date, const KRVCardRemainder& remainder) const {
  KRVCardNewLine line{remainder.group, "BDAY", remainder.parameters, {}};
  setDate(date, line);
  return line;
}

KRVCardNewLine KRVCardComposer::tags(const std::vector<std::string>& tags, const KRVCardRemainder& remainder) const {
  KRVCardNewLine line{remainder.group, "CATEGORIES", remainder.parameters, {}};
  for (const std::string& tag : tags) {
    if (tag.empty()) continue;
    if (!line.value.empty()) line.value.push_back(',');
    line.value += krEscapeElement(tag, version_);
  }
  return line;
}

KRVCardNewLine KRVCardComposer::photo(std::string_view bytes, const KRVCardRemainder& remainder) const {
  const std::string_view kind = krPictureKind(bytes);
  KRVCardNewLine line{remainder.group, "PHOTO", remainder.parameters, krEncodeBase64(bytes)};
  if (version_ == V::V40) {
    const std::string type = !kind.empty() ? "image/" + std::string(kind) : "application/octet-stream";
    line.value.insert(0, "data:" + type + ";base64,");
    return line;
  }
  line.isBase64 = true;
  if (!kind.empty()) line.parameters += ";TYPE=" + upper(kind);
  return line;
}

KRVCardNewLine KRVCardComposer::identifier(KRText UID) const {
  KRVCardNewLine line{{}, "UID", {}, krEscapeText(UID.view(), version_)};
  if (version_ == V::V40) {
    if (krSchemeOf(UID.view()).empty()) {
      line.parameters = ";VALUE=text";
    } else {
      line.value = krEscapeURI(UID.view(), version_);
    }
  }
  return line;
}

KRVCardNewLine KRVCardComposer::unwrapped(const char* name, std::string_view scheme, KRText text) const {
  std::string value(text.view());
  // The reader takes a scheme off, and undoes what stands for bytes behind it.
  if (krStartsIgnoringCase(value, scheme)) value = std::string(scheme) + krEncodePercent(value);
  return {{}, name, {}, krEscapeText(value, version_)};
}

KRVCardNewLine KRVCardComposer::account(const KREntryView& entry) const {
  const std::string_view service = entry.server.view();
  if (version_ == V::V21) {
    const std::string name = krServiceLineName21(service);
    if (!name.empty()) return {{}, name, {}, krEscapeText(entry.text.view(), version_)};
  }
  KRVCardNewLine line{{}, "IMPP", {}, krEncodePercent(entry.text.view())};
  if (service.empty()) return line;
  const std::string scheme(service);
  if (!krSchemeOf(scheme + ":").empty() && krServiceKey(scheme) == scheme) {
    const KRInstantMessageServer* server = KRInstantMessageServer::serverWithName(entry.server);
    const std::string shown(server->displayName().view());
    if (krServiceKey(shown) == scheme) line.parameters = ";X-SERVICE-TYPE=" + parameterValue(shown);
    line.value.insert(0, scheme + ":");
  } else {
    line.parameters = ";X-SERVICE-TYPE=" + parameterValue(service);
    line.value.insert(0, "x-apple:");
  }
  return line;
}

KRVCardNewLine KRVCardComposer::address(const KRAddressView& address, const KRVCardRemainder& remainder) const {
  KRVCardNewLine line{{}, "ADR", {}, {}};
  for (const KRText field : address.fields) line.value.append(krEscapePart(field.view(), version_)).push_back(';');
  line.value.pop_back();
  line.value += remainder.parts;
  return line;
}

KRVCardNewLine KRVCardComposer::dateEntry(const KREntryView& entry, const std::string& name, bool& labelIsWritten) {
  KRVCardNewLine line{{}, name.empty() ? "X-ABDATE" : name, {}, {}};
  if (name.empty() && entry.label == "anniversary") {
    // Version 4.0 has a line for the one anniversary, the others what most programs write.
    line.name = version_ == V::V40 && !hasAnniversary_ ? "ANNIVERSARY" : "X-ANNIVERSARY";
    hasAnniversary_ = true;
    labelIsWritten = true;
  }
  setDate(entry.text, line);
  return line;
}

KRVCardNewLine KRVCardComposer::relation(const KREntryView& entry, const std::string& name) const {
  const std::string_view text = entry.text.view();
  KRVCardNewLine line{{}, name, {}, {}};
  if (name.empty()) line.name = version_ == V::V40 ? "RELATED" : "X-ABRELATEDNAMES";
  const bool isURI = krEqualsIgnoringCase(line.name, "RELATED") && !krSchemeOf(text).empty();
  if (krEqualsIgnoringCase(line.name, "RELATED") && !isURI) line.parameters = ";VALUE=text";
  line.value = isURI ? krEscapeURI(text, version_) : krEscapeText(text, version_);
  return line;
}

KRVCardNewLine KRVCardComposer::value(KROrdinal property, const KREntryView& entry, const KRVCardRemainder& remainder,
                                      bool& labelIsWritten) {
  switch (property) {
    case O::Phone:
      return unwrapped("TEL", "tel:", entry.text);
    case O::Email:
      return unwrapped("EMAIL", "mailto:", entry.text);
    case O::Address:
      return address(*entry.address, remainder);
    case O::InstantMessage:
      if (!remainder.name.empty()) return {{}, remainder.name, {}, krEscapeText(entry.text.view(), version_)};
      return account(entry);
    case O::URL:
      return {{}, remainder.name.empty() ? "URL" : remainder.name, {}, krEscapeURI(entry.text.view(), version_)};
    case O::OtherDate:
      return dateEntry(entry, remainder.name, labelIsWritten);
    case O::RelatedName:
      return relation(entry, remainder.name);
    case O::SocialProfile:
      return {{},
              remainder.name.empty() ? "X-SOCIALPROFILE" : remainder.name,
              {},
              krEscapeURI(entry.text.view(), version_)};
    default:
      return {{}, "X-KR-OTHER", {}, krEscapeText(entry.text.view(), version_)};
  }
}

bool KRVCardComposer::labelParameters(KROrdinal property, KRText label, std::string& parameters) const {
  // To tell types apart, and to see whether the reader does, would cost more than all else about an entry.
  static thread_local KRVCardMemo<std::optional<std::string>> known;
  std::string key{static_cast<char>(property), static_cast<char>(version_)};
  const std::optional<std::string>& text =
      known.of(key.append(label.view()), [&] { return parametersOf(property, label, version_); });
  if (text) parameters = *text;
  return text.has_value();
}

std::string KRVCardComposer::mainParameter() const {
  return version_ == V::V40 ? ";PREF=1" : version_ == V::V30 ? ";TYPE=PREF" : ";PREF";
}

KRVCardNewLine KRVCardComposer::groupLabel(const std::string& group, KRText label) const {
  const bool isMarked = krUnwrappedLabel(label.view()).size() != label.size();
  std::string text = krEscapeText(label.view(), version_);
  if (krIsBuiltInLabel(label.view()) || isMarked) text = "_$!<" + text + ">!$_";
  return {group, "X-ABLabel", {}, text};
}

bool KRVCardComposer::isEmpty(KROrdinal property, const KREntryView& entry) {
  if (property != O::Address) return entry.text.isEmpty();
  return entry.address == nullptr || std::all_of(entry.address->fields.begin(), entry.address->fields.end(),
                                                 [](KRText field) { return field.isEmpty(); });
}

KRVCardComposer::Lines KRVCardComposer::entry(KROrdinal property, const KREntryView& entry, bool isMain,
                                              const KRVCardRemainder& remainder) {
  if (isEmpty(property, entry)) return {};
  bool labelIsWritten = entry.label.isEmpty() || remainder.hasLabelLine || remainder.types.has_value();
  KRVCardNewLine line = value(property, entry, remainder, labelIsWritten);
  line.group = remainder.group;
  std::string types = remainder.types.value_or("");
  if (!labelIsWritten) labelIsWritten = labelParameters(property, entry.label, types);
  if (property == O::Email && version_ != V::V40 && !remainder.types) {
    types = (version_ == V::V30 ? ";TYPE=INTERNET" : ";INTERNET") + types;
  }
  const std::string rank = remainder.ranks.value_or(isMain ? mainParameter() : std::string());
  line.parameters = types + line.parameters + rank + remainder.parameters;
  const bool hasCode = property == O::Address && !remainder.hasCodeLine;
  const KRText code = hasCode ? entry.address->countryCode : KRText();
  if (line.group.empty() && (!labelIsWritten || !code.isEmpty())) line.group = freshGroup();
  Lines lines;
  lines.push_back(std::move(line));
  const std::string group = lines.front().group;
  if (!code.isEmpty()) lines.push_back({group, "X-ABADR", {}, krEscapeText(code.view(), version_)});
  if (!labelIsWritten) lines.push_back(groupLabel(group, entry.label));
  return lines;
}
