#include "contacts/stores/KRDesktopLine.h"

#include <algorithm>

#include "contacts/undo/KRUndoMark.h"
#include "contacts/vcard/KRVCardText.h"

namespace {

std::string unfolded(std::string_view bytes) {
  std::string line;
  line.reserve(bytes.size());
  for (size_t i = 0; i < bytes.size(); ++i) {
    if (bytes[i] != '\r' && bytes[i] != '\n') {
      line += bytes[i];
      continue;
    }
    // A line end and the blank of a fold go together.
    if (bytes[i] == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n') ++i;
    if (i + 1 < bytes.size() && (bytes[i + 1] == ' ' || bytes[i + 1] == '\t')) ++i;
  }
  return line;
}

/// Where the first of these letters stands outside of quotes, from `from` on, or the size.
size_t findUnquoted(std::string_view text, std::string_view letters, size_t from) {
  bool isQuoted = false;
  for (size_t i = from; i < text.size(); ++i) {
    if (text[i] == '"') isQuoted = !isQuoted;
    if (!isQuoted && letters.find(text[i]) != std::string_view::npos) return i;
  }
  return text.size();
}

bool isNamed(std::string_view parameter, std::string_view name) {
  return parameter.size() > name.size() && parameter[name.size()] == '=' &&
         krEqualsIgnoringCase(parameter.substr(0, name.size()), name);
}

std::string withoutQuotes(std::string_view text) {
  std::string plain(text);
  std::erase(plain, '"');
  return plain;
}

}  // namespace

KRDesktopLine::KRDesktopLine(const KRVCardLine& line) {
  const std::string text = unfolded(line.bytes);
  size_t at = findUnquoted(text, ";:", 0);
  name = text.substr(0, at);
  while (at < text.size() && text[at] == ';') {
    const size_t end = findUnquoted(text, ";:", at + 1);
    parameters.push_back(text.substr(at + 1, end - at - 1));
    at = end;
  }
  if (at < text.size()) value = text.substr(at + 1);
}

std::string KRDesktopLine::parameter(std::string_view parameterName) const {
  for (const std::string& each : parameters) {
    if (isNamed(each, parameterName)) return withoutQuotes(std::string_view(each).substr(parameterName.size() + 1));
  }
  return {};
}

bool KRDesktopLine::removeParameter(std::string_view parameterName) {
  return std::erase_if(parameters, [&](const std::string& each) { return isNamed(each, parameterName); }) != 0;
}

std::string KRDesktopLine::text() const {
  std::string line = name;
  for (const std::string& each : parameters) line.append(";").append(each);
  return line.append(":").append(value).append("\r\n");
}

uint64_t KRDesktopLine::stamp() const {
  std::vector<std::string> said;
  for (const std::string& each : parameters) {
    if (!isNamed(each, kKRDesktopPhoneParameter)) said.push_back(withoutQuotes(each));
  }
  std::sort(said.begin(), said.end());
  uint64_t stamp = krUndoMark(krUndoMark(name), krUndoMark(value));
  for (const std::string& each : said) stamp = krUndoMark(stamp, krUndoMark(each));
  return stamp;
}
