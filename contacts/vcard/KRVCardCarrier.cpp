#include "contacts/vcard/KRVCardCarrier.h"

#include <algorithm>

#include "contacts/vcard/KRVCardEscapes.h"
#include "contacts/vcard/KRVCardMemo.h"
#include "contacts/vcard/KRVCardText.h"
#include "contacts/vcard/KRVCardValues.h"

namespace {

using M = KRVCardMeaning;
using V = KRVCardVersion;
using O = KROrdinal;
using Line = KRVCardOutline::Line;

/// Properties whose value is data: base64 up to version 3.0, an address with the data inside from 4.0 on.
struct DataName {
  std::string_view name;
  std::string_view family;
};
constexpr DataName kDataNames[] = {
    {"LOGO", "image/"}, {"SOUND", "audio/"}, {"PHOTO", "image/"}, {"KEY", "application/"}};

const DataName* dataName(std::string_view name) {
  const auto* found = std::find_if(std::begin(kDataNames), std::end(kDataNames),
                                   [&](const DataName& each) { return krEqualsIgnoringCase(each.name, name); });
  return found == std::end(kDataNames) ? nullptr : found;
}

bool isBlank(std::string_view text) noexcept {
  return text.find_first_not_of(" \t\r\n;,") == std::string_view::npos;
}

/// Line feeds written as "\n", or the other way round.
std::string withEscapedBreaks(std::string_view text) {
  std::string result;
  if (text.find('\n') == std::string_view::npos) return result.assign(text);
  for (const char c : text) {
    if (c == '\n') {
      result += "\\n";
    } else {
      result.push_back(c);
    }
  }
  return result;
}
std::string withPlainBreaks(std::string_view text) {
  std::string result;
  for (size_t i = 0; i < text.size(); ++i) {
    const char next = i + 1 < text.size() ? text[i + 1] : '\0';
    if (text[i] != '\\' || next == '\0') {
      result.push_back(text[i]);
      continue;
    }
    ++i;
    if (next == 'n' || next == 'N') {
      result.push_back('\n');
    } else {
      result.append({'\\', next});
    }
  }
  return result;
}

/// Those that the model says nothing about, and that the version knows.
std::string otherParameters(std::string_view parameters, KRVCardVersion version) {
  std::string others = krPartParameters(parameters).others;
  if (version == V::V40) return others;
  // What came with version 4.0 means nothing before.
  std::string kept;
  for (const std::string_view each : krSplitParameters(others)) {
    const std::string name = krLowerASCII(each.substr(0, each.find('=')));
    if (name == "altid" || name == "pid" || name == "calscale" || name == "sort-as") continue;
    kept.append(";").append(each);
  }
  return kept;
}

std::string withoutBlanks(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (c != ' ' && c != '\t' && c != '\r' && c != '\n') result.push_back(c);
  }
  return result;
}

}  // namespace

KRVCardCarrier::KRVCardCarrier(const ABPerson& person, KRVCardVersion version)
    : person_(person), version_(version), outline_(person.card()) {
  for (const Line& line : outline_.lines()) {
    if (!line.group.empty() && isCarried(line)) groups_.insert(krLowerASCII(line.group));
  }
}

bool KRVCardCarrier::isBare(KROrdinal property) const {
  KRHold hold;
  return person_.readText(property, hold).isNothing() && person_.entryCount(property) == 0 &&
         !(property == O::Thumbnail && person_.imageData());
}

bool KRVCardCarrier::isCarried(const Line& line) const {
  if (line.name.empty() || !line.made.empty()) return false;
  switch (line.meaning) {
    case M::Unknown:
      return !isBlank(line.value);
    case M::FirstText:
    case M::Photo:
    case M::Birthday:
      // Behind the value that counts; where there is none, only what the reader passes over.
      return !isBlank(line.value) && !person_.isChanged(line.ordinal) &&
             (line.meaning != M::FirstText || !isBare(line.ordinal));
    case M::Name:
      return !isBlank(line.value) && !person_.isChanged(O::Name) && KRVCardComposer::hasNameParts(person_);
    case M::Organisation:
      return !isBlank(line.value) && !person_.isChanged(O::Company) && !isBare(O::Company);
    case M::DateEntry:
      return !isBlank(line.value) && !person_.isChanged(line.ordinal);
    case M::Kind: {
      const std::string_view kind = krTrimmedBlanks(line.value);
      return version_ == V::V40 && !person_.isOrganization() && !krEqualsIgnoringCase(kind, "org") &&
             !krEqualsIgnoringCase(kind, "organization") && !krEqualsIgnoringCase(kind, "group");
    }
    case M::AndroidCustom:
      return true;
    case M::Sound:
      // The reading of a name stands in lines of its own.
      return !krParseParameters(line.parameters).hasType("irmc-n");
    case M::Agent:
      return version_ == outline_.version() && version_ != V::V40;
    default:
      return false;
  }
}

std::string KRVCardCarrier::parameters(const Line& line) const {
  std::string text;
  for (const std::string_view each : krSplitParameters(line.parameters)) {
    const size_t equals = each.find('=');
    const std::string_view name = krTrimmedBlanks(each.substr(0, equals));
    if (std::count(each.begin(), each.end(), '"') % 2 != 0) continue;
    if (krEqualsIgnoringCase(name, "CHARSET") || krEqualsIgnoringCase(name, "ENCODING")) continue;
    if (equals == std::string_view::npos) {
      const bool isEncoding = krParseParameters(";" + std::string(each)).encoding != KRVCardParameters::None ||
                              krEqualsIgnoringCase(name, "8BIT") || krEqualsIgnoringCase(name, "7BIT");
      if (isEncoding) continue;
      // Types have names from version 3.0 on.
      text += version_ == V::V21 ? ";" : ";TYPE=";
      text += each;
      continue;
    }
    text.append(";").append(each);
  }
  return text;
}

std::string KRVCardCarrier::converted(const Line& line) const {
  std::string value = outline_.decodedValue(line);
  if (version_ != V::V21) return withEscapedBreaks(value);
  return outline_.version() == V::V21 ? value : withPlainBreaks(value);
}

bool KRVCardCarrier::carryPicture(const Line& line, KRVCardNewLine& made) const {
  const DataName* data = dataName(line.name);
  if (line.encoding == KRVCardParameters::Base64) {
    const KRVCardParameters read = krParseParameters(line.parameters);
    made.value = withoutBlanks(line.value);
    // What the reader does not take for data must not become any.
    made.isBase64 = version_ != V::V40 || data == nullptr || read.isURI || !krIsBase64(made.value);
    if (made.isBase64) return true;
    std::string kind = krLowerASCII(read.types);
    kind.resize(std::min(kind.find(' '), kind.size()));
    made.parameters = krPartParameters(made.parameters).others;
    made.value.insert(0, "data:" + std::string(data->family) + (kind.empty() ? "octet-stream" : kind) + ";base64,");
    return true;
  }
  constexpr std::string_view kMark = ";base64,";
  if (version_ == V::V40 || data == nullptr || !krStartsIgnoringCase(line.value, "data:")) return false;
  const size_t mark = line.value.find(kMark);
  if (mark == std::string::npos || !krIsBase64(std::string_view(line.value).substr(mark + kMark.size()))) return false;
  const std::string kind = line.value.substr(5, mark - 5);
  made.parameters = krPartParameters(made.parameters).others;
  const size_t slash = kind.find('/');
  if (slash != std::string::npos) made.parameters += ";TYPE=" + kind.substr(slash + 1);
  made.value = withoutBlanks(std::string_view(line.value).substr(mark + kMark.size()));
  made.isBase64 = true;
  return true;
}

std::optional<KRVCardNewLine> KRVCardCarrier::carried(const Line& line) const {
  KRVCardNewLine made{line.group, line.name, parameters(line), {}};
  if (line.meaning == M::Agent) {
    // A card inside the card: only its own version has it, and there it stands as it is.
    if (outline_.version() != version_ || krEqualsIgnoringCase(krTrimmedBlanks(line.value), "BEGIN:VCARD")) return {};
  }
  if (carryPicture(line, made)) return made;
  made.value = converted(line);
  // Text that the reader took for no picture must not become one by being written differently.
  if (line.meaning == M::Photo && krIsBase64(made.value)) return {};
  return made;
}

KRVCardComposer::Lines KRVCardCarrier::lines() const {
  KRVCardComposer::Lines lines;
  for (const Line& line : outline_.lines()) {
    const bool tellsOfGroup = line.meaning == M::GroupLabel || line.meaning == M::GroupCountryCode;
    if (!isCarried(line) && !(tellsOfGroup && groups_.count(krLowerASCII(line.group)) != 0)) continue;
    if (std::optional<KRVCardNewLine> made = carried(line)) lines.push_back(*std::move(made));
  }
  return lines;
}

KRVCardRemainder KRVCardCarrier::remainder(uint8_t what, size_t index, size_t shownParts) const {
  const Line* line = outline_.lineOf(what, index);
  if (line == nullptr) return {};
  KRVCardRemainder remainder;
  if (!line->parameters.empty()) {
    static thread_local KRVCardMemo<std::string> known;
    std::string key(1, static_cast<char>(version_));
    remainder.parameters =
        known.of(key.append(line->parameters), [&] { return otherParameters(line->parameters, version_); });
  }
  if (shownParts > 0) {
    const std::string value = converted(*line);
    remainder.parts = value.substr(krFurtherParts(value, shownParts));
    if (isBlank(remainder.parts)) remainder.parts.clear();
  }
  return remainder;
}

KRVCardRemainder KRVCardCarrier::nameRemainder(size_t shownParts) const {
  const Line* last = nullptr;
  for (const KRCardPart part : {KRCardPart::LastName, KRCardPart::FirstName, KRCardPart::MiddleName}) {
    // Nearly always one line makes them all.
    const Line* line = outline_.lineOf(static_cast<uint8_t>(part), 0);
    if (line == nullptr || line == last) continue;
    KRVCardRemainder rest = remainder(static_cast<uint8_t>(part), 0, shownParts);
    if (!rest.parts.empty() || !rest.parameters.empty()) return rest;
    last = line;
  }
  return {};
}

std::optional<std::string> KRVCardCarrier::formattedName() const {
  for (const O property : {O::Name, O::Title, O::Suffix, O::Company, O::IsOrganization}) {
    if (person_.isChanged(property)) return std::nullopt;
  }
  const KREscapes escapes = outline_.version() == V::V21 ? KREscapes::Text21 : KREscapes::Full;
  for (const Line& line : outline_.lines()) {
    if (line.meaning != M::FormattedName) continue;
    const std::string text = krUndoEscapes(outline_.decodedValue(line), escapes);
    if (text.empty()) continue;
    // The first that is not empty counts, though it may be nothing but blanks.
    const bool isUseful = !isBlank(text) || person_.isOrganization() || !KRVCardComposer::hasNameParts(person_);
    return isUseful ? std::optional<std::string>(krEscapeText(text, version_)) : std::nullopt;
  }
  return std::nullopt;
}
