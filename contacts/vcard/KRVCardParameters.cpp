#include "contacts/vcard/KRVCardParameters.h"

#include <algorithm>

#include "contacts/model/KRLabelTable.h"
#include "contacts/vcard/KRVCardText.h"

namespace {

/// More types than this are not told apart.
constexpr size_t kMostTypes = 32;

/// Types that say nothing about where or how a contact is reached.
bool isSilent(std::string_view type) noexcept {
  constexpr std::string_view kSilent[] = {"pref", "internet", "dom", "intl", "postal", "parcel"};
  return std::find(std::begin(kSilent), std::end(kSilent), type) != std::end(kSilent);
}

/// "home", "work" and "other" stand first, so that one label has one spelling.
bool isPlace(std::string_view type) noexcept {
  return type == "home" || type == "work" || type == "other";
}

std::string_view unquoted(std::string_view text) noexcept {
  // Some programs escape the quotes as if they stood in a value.
  if (text.starts_with("\\\"")) text.remove_prefix(1);
  if (text.size() < 2 || text.front() != '"') return text;
  text.remove_prefix(1);
  if (text.back() == '"') text.remove_suffix(1);
  if (text.ends_with('\\')) text.remove_suffix(1);
  return text;
}

/// What RFC 6868 writes for the characters that no parameter can hold.
std::string withoutCarets(std::string_view text) {
  std::string plain;
  for (size_t i = 0; i < text.size(); ++i) {
    const char next = text[i] == '^' && i + 1 < text.size() ? text[i + 1] : '\0';
    const bool isMark = next == '^' || next == 'n' || next == '\'';
    plain.push_back(!isMark ? text[i] : next == 'n' ? '\n' : next == '^' ? '^' : '"');
    if (isMark) ++i;
  }
  return plain;
}

/// Where the next `separator` stands outside quotes, from `from` on, or the size of the text.
size_t findUnquoted(std::string_view text, char separator, size_t from) noexcept {
  bool isQuoted = false;
  for (size_t i = from; i < text.size(); ++i) {
    if (text[i] == '"') isQuoted = !isQuoted;
    if (text[i] == separator && !isQuoted) return i;
  }
  return text.size();
}

/// A label that a phone spelled out in the parameter itself:
/// "X-CUSTOM(CHARSET=UTF-8,ENCODING=QUOTED-PRINTABLE,=70=65)".
bool readSpelledLabel(std::string_view token, std::string& label) {
  constexpr std::string_view kStart = "X-CUSTOM(";
  if (token.size() < kStart.size() || !krEqualsIgnoringCase(token.substr(0, kStart.size()), kStart)) return false;
  token.remove_prefix(kStart.size());
  if (token.ends_with(')')) token.remove_suffix(1);
  const size_t comma = token.rfind(',');
  const std::string_view last = comma == std::string_view::npos ? token : token.substr(comma + 1);
  label = krWellFormed(krDecodeQuotedPrintable(last));
  return true;
}

class Reading {
 public:
  explicit Reading(KRVCardParameters& result) : result_(result) {}

  void parameter(std::string_view text) {
    const size_t equals = text.find('=');
    std::string label;
    if (readSpelledLabel(text, label)) {
      custom_ = label;
    } else if (equals == std::string_view::npos) {
      bare(krTrimmedBlanks(text));
    } else {
      named(krTrimmedBlanks(text.substr(0, equals)), krTrimmedBlanks(text.substr(equals + 1)));
    }
  }

  void finish() {
    for (const std::string& type : types_) result_.types.append(krLowerASCII(type)).push_back(' ');
    const KRString name(labelName());
    if (name.isEmpty()) return;
    result_.label = KRLabelTable::number(name);
    if (result_.label == 0) result_.labelText = name;
  }

 private:
  void bare(std::string_view token) {
    if (!encoding(token)) types(token);
  }

  void named(std::string_view name, std::string_view value) {
    if (krEqualsIgnoringCase(name, "TYPE") || krEqualsIgnoringCase(name, "INTERNET")) {
      types(value);
    } else if (krEqualsIgnoringCase(name, "ENCODING")) {
      encoding(unquoted(value));
    } else if (krEqualsIgnoringCase(name, "CHARSET")) {
      result_.charset = unquoted(value);
    } else if (krEqualsIgnoringCase(name, "PREF")) {
      preference(unquoted(value));
    } else if (krEqualsIgnoringCase(name, "VALUE")) {
      const std::string_view kind = unquoted(value);
      result_.isURI = krEqualsIgnoringCase(kind, "URI") || krEqualsIgnoringCase(kind, "URL");
    } else if (krEqualsIgnoringCase(name, "X-SERVICE-TYPE") || krEqualsIgnoringCase(name, "SERVICE-TYPE")) {
      result_.service = withoutCarets(unquoted(value));
    } else if (krEqualsIgnoringCase(name, "X-APPLE-OMIT-YEAR")) {
      omittedYear(unquoted(value));
    }
  }

  bool encoding(std::string_view token) {
    if (krEqualsIgnoringCase(token, "QUOTED-PRINTABLE") || krEqualsIgnoringCase(token, "Q")) {
      result_.encoding = KRVCardParameters::QuotedPrintable;
    } else if (krEqualsIgnoringCase(token, "BASE64") || krEqualsIgnoringCase(token, "B")) {
      result_.encoding = KRVCardParameters::Base64;
    } else {
      return krEqualsIgnoringCase(token, "8BIT") || krEqualsIgnoringCase(token, "7BIT");
    }
    return true;
  }

  void preference(std::string_view value) {
    int rank = 0;
    for (const char c : value) {
      if (c < '0' || c > '9') return;
      rank = std::min(rank * 10 + (c - '0'), 100);
    }
    if (rank > 0) result_.preference = static_cast<uint8_t>(rank);
  }

  void omittedYear(std::string_view value) {
    constexpr size_t kDigits = 4;
    if (value.size() != kDigits ||
        !std::all_of(value.begin(), value.end(), [](char c) { return c >= '0' && c <= '9'; }))
      return;
    result_.omittedYear = 0;
    for (const char c : value) result_.omittedYear = result_.omittedYear * 10 + (c - '0');
  }

  /// One type or a list of them; a list may also be quoted as a whole.
  void types(std::string_view list) {
    for (size_t at = 0; at <= list.size();) {
      const size_t comma = findUnquoted(list, ',', at);
      std::string_view inner = unquoted(krTrimmedBlanks(list.substr(at, comma - at)));
      while (true) {
        const size_t end = std::min(inner.find(','), inner.size());
        type(krTrimmedBlanks(inner.substr(0, end)));
        if (end == inner.size()) break;
        inner.remove_prefix(end + 1);
      }
      at = comma + 1;
    }
  }

  void type(std::string_view name) {
    std::string lowered = krLowerASCII(name);
    if (lowered == "pref" && result_.preference == 0) result_.preference = 1;
    if (lowered.starts_with("x-") && lowered.size() > 2) {
      lowered = name.substr(2);
    } else if (lowered == "cell") {
      lowered = "mobile";
    }
    if (lowered.empty() || types_.size() == kMostTypes ||
        std::find(types_.begin(), types_.end(), lowered) != types_.end())
      return;
    types_.push_back(lowered);
  }

  std::string labelName() const {
    if (!custom_.empty()) return custom_;
    std::string name;
    const auto append = [&](const std::string& type) {
      if (!name.empty()) name.push_back(' ');
      name.append(type);
    };
    for (const bool places : {true, false}) {
      for (const std::string& type : types_) {
        if (isPlace(type) == places && !isSilent(type) && type != "voice") append(type);
      }
    }
    const bool isVoice = std::find(types_.begin(), types_.end(), "voice") != types_.end();
    return name.empty() && isVoice ? "voice" : name;
  }

  KRVCardParameters& result_;
  std::vector<std::string> types_;
  std::string custom_;
};

}  // namespace

bool KRVCardParameters::hasType(std::string_view type) const noexcept {
  for (size_t at = 0; at < types.size();) {
    const size_t end = types.find(' ', at);
    if (std::string_view(types).substr(at, end - at) == type) return true;
    at = end + 1;
  }
  return false;
}

KRVCardParameters krParseParameters(std::string_view text) {
  KRVCardParameters result;
  Reading reading(result);
  for (const std::string_view each : krSplitParameters(text)) reading.parameter(each);
  reading.finish();
  return result;
}

std::vector<std::string_view> krSplitParameters(std::string_view text) {
  std::vector<std::string_view> parameters;
  for (size_t at = 0; at < text.size();) {
    const size_t end = findUnquoted(text, ';', at);
    if (end > at) parameters.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return parameters;
}
