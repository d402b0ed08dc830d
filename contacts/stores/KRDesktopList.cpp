#include "contacts/stores/KRDesktopList.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "contacts/stores/KRDesktopLine.h"
#include "contacts/vcard/KRVCardEscapes.h"
#include "contacts/vcard/KRVCardText.h"

namespace {

constexpr std::string_view kMemberUID = "X-EVOLUTION-DEST-CONTACT-UID";

/// The identifier of the contact that the line names as a member, or empty.
std::string memberOf(const KRVCardLine& line) {
  return krEqualsIgnoringCase(line.name(), "EMAIL") ? KRDesktopLine(line).parameter(kMemberUID) : std::string();
}

/// The text between quotes, where neither a quote nor a control character can stand.
std::string quoted(std::string_view text) {
  std::string result = "\"";
  for (const char letter : text) {
    if (static_cast<unsigned char>(letter) >= 0x20) result += letter == '"' ? '\'' : letter;
  }
  return result + '"';
}

std::string memberLine(const KRDesktopMember& member) {
  std::string line = "EMAIL;" + std::string(kMemberUID) + '=' + quoted(member.UID);
  if (!member.name.empty()) line += ";X-EVOLUTION-DEST-NAME=" + quoted(member.name);
  if (!member.email.empty()) line += ";X-EVOLUTION-DEST-EMAIL-NUM=0;X-EVOLUTION-DEST-EMAIL=" + quoted(member.email);
  std::string shown = member.email;
  if (shown.empty()) {
    shown = member.name;
  } else if (!member.name.empty()) {
    shown = quoted(member.name) + " <" + member.email + '>';
  }
  return line + ':' + krEscapeText(shown, KRVCardVersion::V30) + "\r\n";
}

}  // namespace

KRDesktopList krReadDesktopList(std::string_view card) {
  KRDesktopList list;
  std::unordered_set<std::string> known;
  KRVCardLines lines;
  KRVCardLine line;
  lines.start(card, true, 1);
  while (lines.next(line) == KRVCardLines::Result::Line) {
    if (krEqualsIgnoringCase(line.name(), "FN") && list.name.empty())
      list.name = krUndoEscapes(line.value, KREscapes::Full);
    std::string member = memberOf(line);
    if (!member.empty() && known.insert(member).second) list.members.push_back(std::move(member));
  }
  return list;
}

std::string krNewDesktopList(std::string_view UID, std::string_view name, const std::vector<KRDesktopMember>& members) {
  std::string card = "BEGIN:VCARD\r\nVERSION:3.0\r\n";
  const auto add = [&](std::string_view property, std::string_view text) {
    card.append(property).append(krEscapeText(text, KRVCardVersion::V30)).append("\r\n");
  };
  if (!UID.empty()) add("UID:", UID);
  add("FN:", name);
  add("X-EVOLUTION-FILE-AS:", name);
  card += "X-EVOLUTION-LIST:TRUE\r\nX-EVOLUTION-LIST-SHOW-ADDRESSES:TRUE\r\n";
  for (const KRDesktopMember& member : members) card += memberLine(member);
  return card + "END:VCARD\r\n";
}

std::string krChangedDesktopList(std::string_view card, const std::vector<KRDesktopMember>& members,
                                 const std::function<bool(const std::string& UID)>& isOurs) {
  std::unordered_set<std::string> wanted;
  for (const KRDesktopMember& member : members) wanted.insert(member.UID);
  std::unordered_set<std::string> present;
  std::string result;
  KRVCardLines lines;
  KRVCardLine line;
  lines.start(card, true, 1);
  while (lines.next(line) == KRVCardLines::Result::Line) {
    const std::string member = memberOf(line);
    if (!member.empty() && !wanted.contains(member) && isOurs(member)) continue;
    present.insert(member);
    if (line.isEnd()) {
      for (const KRDesktopMember& each : members) {
        if (present.insert(each.UID).second) result += memberLine(each);
      }
    }
    result += line.bytes;
  }
  return result;
}
