#include "contacts/vcard/KRVCardGroupRewriter.h"

#include "contacts/vcard/KRVCardComposer.h"
#include "contacts/vcard/KRVCardEscapes.h"
#include "contacts/vcard/KRVCardLineWriter.h"
#include "contacts/vcard/KRVCardLines.h"
#include "contacts/vcard/KRVCardOutline.h"
#include "contacts/vcard/KRVCardPlan.h"
#include "contacts/vcard/KRVCardText.h"
#include "contacts/vcard/KRVCardValues.h"

namespace {

using Line = KRVCardOutline::Line;

constexpr std::string_view kScheme = "urn:uuid:";
constexpr std::string_view kMember = "MEMBER";
constexpr std::string_view kCustomaryMember = "X-ADDRESSBOOKSERVER-MEMBER";
constexpr std::string_view kKind = "KIND";
constexpr std::string_view kCustomaryKind = "X-ADDRESSBOOKSERVER-KIND";

KRVCardNewLine newLine(std::string_view name, std::string value) {
  KRVCardNewLine line;
  line.name = name;
  line.value = std::move(value);
  return line;
}

KRVCardNewLine memberLine(std::string_view name, KRText UID, KRVCardVersion version) {
  // Version 4.0 wants the very identifier where that is an address already.
  const bool isAddress = krEqualsIgnoringCase(name, kMember) && !krSchemeOf(UID.view()).empty();
  std::string value(isAddress ? std::string_view() : kScheme);
  value += isAddress ? UID.view() : krPlainUID(UID).view();
  return newLine(name, krEscapeURI(value, version));
}

bool isOfGroup(std::string_view name) {
  return krIsGroupMember(name) || krEqualsIgnoringCase(name, kKind) || krEqualsIgnoringCase(name, kCustomaryKind);
}

/// The line that makes a card one of a group.
KRVCardNewLine kindLine(KRVCardVersion version) {
  return newLine(version == KRVCardVersion::V40 ? kKind : kCustomaryKind, "group");
}

KRVCardComposer::Lines memberLines(const KRStringList& members, KRVCardVersion version) {
  KRVCardComposer::Lines lines;
  const std::string_view name = version == KRVCardVersion::V40 ? kMember : kCustomaryMember;
  for (const KRString& UID : members) lines.push_back(memberLine(name, UID, version));
  return lines;
}

bool hasIdentifier(const KRVCardOutline& outline) {
  for (const Line& line : outline.lines()) {
    if (line.meaning == KRVCardMeaning::UID && !outline.decodedValue(line).empty()) return true;
  }
  return false;
}

void addIdentifier(const KRVCardOutline& outline, KRText UID, KRVCardPlan& plan) {
  if (!UID.isEmpty() && !hasIdentifier(outline)) plan.insertAtEnd({KRVCardComposer(outline.version()).identifier(UID)});
}

/// By which of the two names the card calls its members; the version decides where it has none and says its kind
/// otherwise.
std::string_view memberNameOf(const KRVCardOutline& outline) {
  std::string_view name = outline.version() == KRVCardVersion::V40 ? kMember : kCustomaryMember;
  for (const Line& line : outline.lines()) {
    if (krIsGroupMember(line.name)) return krEqualsIgnoringCase(line.name, kMember) ? kMember : kCustomaryMember;
    if (krEqualsIgnoringCase(line.name, kKind)) name = kMember;
    if (krEqualsIgnoringCase(line.name, kCustomaryKind)) name = kCustomaryMember;
  }
  return name;
}

}  // namespace

std::vector<KRVCardEdit> KRVCardGroupRewriter::edits(std::string_view card, const KRVCardGroupChange& change,
                                                     std::string_view charset) {
  const KRVCardOutline outline(card);
  const KREscapes escapes = outline.version() == KRVCardVersion::V21 ? KREscapes::Text21 : KREscapes::Full;
  KRVCardPlan plan(outline, charset);
  addIdentifier(outline, change.UID, plan);
  const Line* last = nullptr;
  for (const Line& line : outline.lines()) {
    if (!krIsGroupMember(line.name)) continue;
    last = &line;
    const KRString member(krUndoEscapes(outline.decodedValue(line), escapes));
    if (change.dropped.count(KRString(krPlainUID(member))) != 0) plan.drop(line);
  }
  KRVCardComposer::Lines lines;
  const std::string_view name = memberNameOf(outline);
  for (const KRString& UID : change.added) lines.push_back(memberLine(name, UID, outline.version()));
  if (last != nullptr) {
    plan.insertBehind(*last, lines);
  } else {
    plan.insertAtEnd(lines);
  }
  return plan.edits();
}

std::vector<KRVCardEdit> KRVCardGroupRewriter::identifyingEdits(std::string_view card, KRText UID,
                                                                std::string_view charset) {
  const KRVCardOutline outline(card);
  KRVCardPlan plan(outline, charset);
  addIdentifier(outline, UID, plan);
  return plan.edits();
}

std::string KRVCardGroupRewriter::card(const KRVCardGroup& group, KRVCardVersion version,
                                       const KRVCardLineStyle& style) {
  const bool isStandard = version == KRVCardVersion::V40;
  const KRVCardLineWriter writer(version, style);
  std::string card;
  const auto put = [&](const KRVCardNewLine& line) { writer.append(line, card); };
  put(newLine("BEGIN", "VCARD"));
  put(newLine("VERSION", version == KRVCardVersion::V21 ? "2.1" : isStandard ? "4.0" : "3.0"));
  put(kindLine(version));
  // The older versions want a name in parts too.
  if (!isStandard) put(newLine("N", krEscapePart(group.name.view(), version) + ";;;;"));
  put(newLine("FN", krEscapeText(group.name.view(), version)));
  if (!group.UID.isEmpty()) put(KRVCardComposer(version).identifier(group.UID));
  for (const KRVCardNewLine& line : memberLines(group.members, version)) put(line);
  // Not by the writer, which keeps that text from standing on one line.
  return card.append("END:VCARD").append(style.lineEnd);
}

std::string KRVCardGroupRewriter::card(const ABPerson& group, KRVCardVersion version) {
  const KRVCardLineWriter writer(version);
  const std::string written = KRVCardWriter(version).card(group);
  std::string card;
  KRVCardLines lines;
  KRVCardLine line;
  lines.start(written, true, 1);
  while (lines.next(line) == KRVCardLines::Result::Line) {
    if (isOfGroup(line.name())) continue;
    if (line.isEnd()) {
      writer.append(kindLine(version), card);
      for (const KRVCardNewLine& member : memberLines(KRVCardGroup::read(group.card()).members, version))
        writer.append(member, card);
    }
    card += line.bytes;
  }
  return card;
}
