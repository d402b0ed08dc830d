#include "contacts/vcard/KRVCardOutline.h"

#include <algorithm>

#include "contacts/vcard/KRVCardCharset.h"
#include "contacts/vcard/KRVCardParser.h"
#include "contacts/vcard/KRVCardText.h"
#include "contacts/vcard/KRVCardValues.h"

namespace {

bool isOneOf(std::string_view name, std::initializer_list<std::string_view> names) noexcept {
  return std::any_of(names.begin(), names.end(),
                     [&](std::string_view each) { return krEqualsIgnoringCase(each, name); });
}

/// The types of a list without the mark of the main entry; empty when nothing is left.
std::string withoutRank(std::string_view list) {
  const bool isQuoted = list.size() > 1 && list.front() == '"' && list.back() == '"';
  if (isQuoted) list = list.substr(1, list.size() - 2);
  std::string kept;
  for (size_t at = 0; at <= list.size();) {
    const size_t end = std::min(list.find(',', at), list.size());
    const std::string_view type = list.substr(at, end - at);
    at = end + 1;
    if (krEqualsIgnoringCase(krTrimmedBlanks(type), "PREF")) continue;
    if (!kept.empty()) kept.push_back(',');
    kept += type;
  }
  return isQuoted && !kept.empty() ? "\"" + kept + "\"" : kept;
}

/// How a line ends, from its bytes with the line end.
std::string_view lineEndOf(std::string_view line, bool isReturn) noexcept {
  if (isReturn) return "\r";
  return line.ends_with('\n') && !line.ends_with("\r\n") ? "\n" : "\r\n";
}

}  // namespace

KRVCardParameterParts krPartParameters(std::string_view parameters) {
  KRVCardParameterParts parts;
  for (const std::string_view each : krSplitParameters(parameters)) {
    // Quotes that are left open would take in what is written behind them.
    if (std::count(each.begin(), each.end(), '"') % 2 != 0) continue;
    const size_t equals = each.find('=');
    const std::string_view name = krTrimmedBlanks(each.substr(0, equals));
    if (equals == std::string_view::npos) {
      const bool isEncoding = isOneOf(name, {"QUOTED-PRINTABLE", "Q", "BASE64", "B", "8BIT", "7BIT"});
      const bool isRank = krEqualsIgnoringCase(name, "PREF");
      if (!isEncoding) (isRank ? parts.ranks : parts.types).append(";").append(each);
    } else if (krEqualsIgnoringCase(name, "PREF")) {
      parts.ranks.append(";").append(each);
    } else if (isOneOf(name, {"TYPE", "INTERNET"})) {
      const std::string_view list = krTrimmedBlanks(each.substr(equals + 1));
      const std::string types = withoutRank(list);
      if (types.size() != list.size()) parts.ranks.append(";TYPE=PREF");
      if (!types.empty()) parts.types.append(";").append(name).append("=").append(types);
    } else if (krStartsIgnoringCase(name, "X-CUSTOM(")) {
      parts.types.append(";").append(each);
    } else if (!isOneOf(name, {"ENCODING", "CHARSET", "VALUE", "X-SERVICE-TYPE", "SERVICE-TYPE", "X-APPLE-OMIT-YEAR",
                               "MEDIATYPE"})) {
      parts.others.append(";").append(each);
    }
  }
  return parts;
}

size_t krFurtherParts(std::string_view value, size_t count) noexcept {
  size_t at = 0;
  for (size_t i = 0; i < count; ++i) {
    at = krFindUnescaped(value, ';', i == 0 ? 0 : at + 1);
    if (at == value.size()) break;
  }
  return at;
}

bool KRVCardOutline::Line::makes(uint8_t what) const noexcept {
  return std::any_of(made.begin(), made.end(), [&](const Made& each) { return each.what == what; });
}

KRVCardOutline::KRVCardOutline(std::string_view card) : card_(card) {
  KRVCardParser parser;
  // It remembers the heads of lines, which would cost more to tell apart than a card to read.
  static thread_local KRVCardLines scanner;
  KRVCardLine line;
  const char* const end = card.data() + card.size();
  size_t depth = 0;
  bool isAfterAgent = false;
  endOffset_ = card.size();
  // As many as most cards have.
  lines_.reserve(24);
  scanner.start(card, true, 1);
  parser.start(card.data(), end);
  while (scanner.next(line) == KRVCardLines::Result::Line) {
    // Cards inside the card, as the reader passes them over.
    const bool opens = line.isBegin() && isAfterAgent;
    const bool isInner = depth > 0 || opens;
    isAfterAgent = false;
    if (opens) {
      ++depth;
    } else if (depth > 0 && line.isEnd()) {
      --depth;
    } else if (line.means(KRVCardMeaning::Agent)) {
      const std::string_view value = krTrimmedBlanks(line.value);
      if (krEqualsIgnoringCase(value, "BEGIN:VCARD")) {
        ++depth;
      } else {
        isAfterAgent = value.empty();
      }
    }
    if (isInner) {
      lines_.back().size =
          static_cast<size_t>(line.bytes.data() + line.bytes.size() - card.data()) - lines_.back().offset;
      continue;
    }
    if (lines_.empty()) {
      scanner.setReturnsEndLines(scanner.endedWithReturn());
      lineEnd_ = lineEndOf(line.bytes, scanner.endedWithReturn());
    }
    const bool isFrame = lines_.empty() ? line.isBegin() : line.isEnd();
    if (isFrame && line.isEnd()) endOffset_ = static_cast<size_t>(line.bytes.data() - card.data());
    add(line, card);
    if (isFrame || !line.hasName()) continue;
    const size_t before = parser.draft().entryCount();
    parser.take(line);
    for (size_t i = before; i < parser.draft().entryCount(); ++i) {
      const uint8_t what = parser.draft().what(static_cast<KRCardDraft::Entry>(i));
      std::vector<size_t>& makers = makers_[what];
      lines_.back().made.push_back({what, makers.size()});
      makers.push_back(lines_.size() - 1);
    }
    if (line.means(KRVCardMeaning::Version)) {
      version_ = krVCardVersionNamed(krTrimmedBlanks(line.value)).value_or(KRVCardVersion::V30);
    }
  }
}

void KRVCardOutline::add(const KRVCardLine& line, std::string_view card) {
  const auto offset = static_cast<size_t>(line.bytes.data() - card.data());
  if (!lines_.empty() && lines_.back().encoding == KRVCardParameters::Base64) {
    lines_.back().size = offset - lines_.back().offset;
  }
  Line& kept = lines_.emplace_back();
  kept.offset = offset;
  kept.size = line.bytes.size();
  kept.meaning = line.property->meaning;
  kept.ordinal = line.property->ordinal;
  kept.group = line.group();
  kept.name = line.name();
  kept.parameters = line.parameterText();
  kept.encoding = line.parameters->encoding;
  kept.value = kept.encoding == KRVCardParameters::Base64 ? line.raw : line.value;
  kept.charset = line.parameters->charset;
  kept.preference = line.parameters->preference;
}

const KRVCardOutline::Line* KRVCardOutline::lineOf(uint8_t what, size_t index) const noexcept {
  if (what >= makers_.size() || index >= makers_[what].size()) return nullptr;
  return &lines_[makers_[what][index]];
}

const KRVCardOutline::Line* KRVCardOutline::firstOf(KRVCardMeaning meaning) const noexcept {
  const auto found =
      std::find_if(lines_.begin(), lines_.end(), [&](const Line& line) { return line.meaning == meaning; });
  return found == lines_.end() ? nullptr : &*found;
}

bool KRVCardOutline::sharesGroup(const Line& line) const noexcept {
  return !line.group.empty() && std::any_of(lines_.begin(), lines_.end(), [&](const Line& each) {
    return &each != &line && each.meaning != KRVCardMeaning::GroupLabel &&
           each.meaning != KRVCardMeaning::GroupCountryCode && krEqualsIgnoringCase(each.group, line.group);
  });
}

std::string KRVCardOutline::decodedValue(const Line& line) const {
  std::string bytes = line.encoding == KRVCardParameters::QuotedPrintable
                          ? krWithLineFeeds(krDecodeQuotedPrintable(line.value))
                          : line.value;
  if (!KRVCardCharset::needsDecoding(bytes, line.charset)) return bytes;
  return KRVCardCharset().decode(bytes, line.charset, card_);
}
