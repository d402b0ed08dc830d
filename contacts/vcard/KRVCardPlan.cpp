#include "contacts/vcard/KRVCardPlan.h"

#include <unordered_map>

#include "contacts/vcard/KRVCardText.h"

namespace {

using Line = KRVCardOutline::Line;

bool tellsOfGroup(const Line& line) noexcept {
  return line.meaning == KRVCardMeaning::GroupLabel || line.meaning == KRVCardMeaning::GroupCountryCode;
}

}  // namespace

KRVCardPlan::KRVCardPlan(const KRVCardOutline& outline, std::string_view charset)
    : outline_(outline), writer_(outline.version(), {outline.lineEnd(), charset}), steps_(outline.lines().size()) {}

size_t KRVCardPlan::place(const Line& line) const {
  return static_cast<size_t>(&line - outline_.lines().data());
}

std::string KRVCardPlan::text(const KRVCardComposer::Lines& lines) const {
  std::string bytes;
  for (const KRVCardNewLine& line : lines) writer_.append(line, bytes);
  return bytes;
}

void KRVCardPlan::drop(const Line& line) {
  Step& step = at(line);
  step.fate = Fate::Dropped;
  step.text.clear();
}

void KRVCardPlan::replace(const Line& line, const KRVCardComposer::Lines& lines) {
  Step& step = at(line);
  step.fate = Fate::Replaced;
  step.text = text(lines);
  step.group = lines.empty() ? std::string() : lines.front().group;
}

void KRVCardPlan::insertBefore(const Line& line, const KRVCardComposer::Lines& lines) {
  at(line).before += text(lines);
}

void KRVCardPlan::insertBehind(const Line& line, const KRVCardComposer::Lines& lines) {
  size_t last = place(line);
  while (!line.group.empty() && last + 1 < steps_.size() && tellsOfGroup(outline_.lines()[last + 1]) &&
         krEqualsIgnoringCase(outline_.lines()[last + 1].group, line.group)) {
    ++last;
  }
  steps_[last].behind += text(lines);
}

void KRVCardPlan::insertAtEnd(const KRVCardComposer::Lines& lines) {
  atEnd_ += text(lines);
}

void KRVCardPlan::dropEmptyGroups() {
  // Groups that had members, and whether they have any still; in one walk, as a card may have very many groups.
  std::unordered_map<std::string, bool> hasMembers;
  for (const Line& line : outline_.lines()) {
    if (tellsOfGroup(line) || line.group.empty()) continue;
    const Step& step = at(line);
    const bool isMember =
        step.fate == Fate::Kept || (step.fate == Fate::Replaced && krEqualsIgnoringCase(step.group, line.group));
    bool& hasAny = hasMembers[krLowerASCII(line.group)];
    hasAny = hasAny || isMember;
  }
  for (const Line& line : outline_.lines()) {
    if (!tellsOfGroup(line) || line.group.empty() || at(line).fate != Fate::Kept) continue;
    const auto group = hasMembers.find(krLowerASCII(line.group));
    if (group != hasMembers.end() && !group->second) drop(line);
  }
}

std::vector<KRVCardEdit> KRVCardPlan::edits() {
  dropEmptyGroups();
  std::vector<KRVCardEdit> edits;
  const auto add = [&](size_t offset, size_t size, std::string bytes) {
    if (size == 0 && bytes.empty()) return;
    // What is next to the edit before becomes one with it.
    if (!edits.empty() && edits.back().offset + edits.back().size == offset) {
      edits.back().size += size;
      edits.back().bytes += bytes;
    } else {
      edits.push_back({offset, size, std::move(bytes)});
    }
  };
  for (const Line& line : outline_.lines()) {
    Step& step = at(line);
    if (line.offset == outline_.endOffset()) add(line.offset, 0, std::move(atEnd_));
    add(line.offset, 0, std::move(step.before));
    if (step.fate != Fate::Kept) add(line.offset, line.size, std::move(step.text));
    add(line.offset + line.size, 0, std::move(step.behind));
  }
  return edits;
}
