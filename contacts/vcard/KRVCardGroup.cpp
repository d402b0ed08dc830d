#include "contacts/vcard/KRVCardGroup.h"

#include "contacts/vcard/KRVCardOutline.h"
#include "contacts/vcard/KRVCardText.h"
#include "contacts/vcard/KRVCardValues.h"

namespace {

constexpr std::string_view kScheme = "urn:uuid:";

}  // namespace

KRVCardGroup KRVCardGroup::read(std::string_view card) {
  const KRVCardOutline outline(card);
  const KREscapes escapes = outline.version() == KRVCardVersion::V21 ? KREscapes::Text21 : KREscapes::Full;
  KRVCardGroup group;
  KRString lastName;
  for (const KRVCardOutline::Line& line : outline.lines()) {
    const auto text = [&] { return KRString(krUndoEscapes(outline.decodedValue(line), escapes)); };
    if (line.meaning == KRVCardMeaning::FormattedName && group.name.isEmpty()) {
      group.name = text();
    } else if (line.meaning == KRVCardMeaning::Name && lastName.isEmpty()) {
      const std::string value = outline.decodedValue(line);
      lastName = KRString(krUndoEscapes(value.substr(0, krFindUnescaped(value, ';', 0)), escapes));
    } else if (line.meaning == KRVCardMeaning::UID && group.UID.isEmpty()) {
      group.UID = text();
    } else if (krIsGroupMember(line.name)) {
      const KRString member = text();
      if (!member.isEmpty()) group.members.push_back(member);
    }
  }
  if (group.name.isEmpty()) group.name = lastName;
  if (group.name.isEmpty()) group.name = {};
  if (group.UID.isEmpty()) group.UID = {};
  return group;
}

KRText krPlainUID(KRText UID) noexcept {
  const std::string_view text = UID.view();
  return krStartsIgnoringCase(text, kScheme) ? KRText(text.substr(kScheme.size())) : UID;
}

bool krIsGroupMember(std::string_view name) noexcept {
  return krEqualsIgnoringCase(name, "MEMBER") || krEqualsIgnoringCase(name, "X-ADDRESSBOOKSERVER-MEMBER");
}
