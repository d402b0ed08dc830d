#include "contacts/vcard/KRVCardEntryRewriter.h"

#include <algorithm>

#include "contacts/vcard/KRVCardEntryMatch.h"
#include "contacts/vcard/KRVCardText.h"

namespace {

using M = KRVCardMeaning;
using O = KROrdinal;
using Line = KRVCardOutline::Line;

bool sameOrBothEmpty(KRText a, KRText b) noexcept {
  return a.view() == b.view();
}

bool sameAddress(const KRAddressView& a, const KRAddressView& b, bool withCode) {
  return std::equal(a.fields.begin(), a.fields.end(), b.fields.begin(), sameOrBothEmpty) &&
         (!withCode || sameOrBothEmpty(a.countryCode, b.countryCode));
}

bool sameValue(const KREntryView& a, const KREntryView& b) {
  if ((a.address == nullptr) != (b.address == nullptr)) return false;
  if (a.address != nullptr) return sameAddress(*a.address, *b.address, true);
  return sameOrBothEmpty(a.text, b.text) && sameOrBothEmpty(a.server, b.server);
}

}  // namespace

KRVCardEntryRewriter::KRVCardEntryRewriter(const ABPerson& person, const ABPerson& original, KROrdinal property,
                                           const KRVCardOutline& outline, KRVCardComposer& composer, KRVCardPlan& plan)
    : property_(property),
      outline_(outline),
      composer_(composer),
      plan_(plan),
      old_(entriesOf(original, property, hold_)),
      new_(entriesOf(person, property, hold_)) {
  for (std::vector<Entry>* entries : {&old_, &new_}) {
    for (Entry& entry : *entries) entry.view.address = property == O::Address ? &entry.address : nullptr;
  }
  // What no line can hold.
  new_.erase(std::remove_if(new_.begin(), new_.end(),
                            [&](const Entry& entry) { return KRVCardComposer::isEmpty(property, entry.view); }),
             new_.end());
  for (Entry& entry : new_) {
    if (property == O::Address) entry.view.address = &entry.address;
  }
  settleMain();
}

std::vector<KRVCardEntryRewriter::Entry> KRVCardEntryRewriter::entriesOf(const ABPerson& person, KROrdinal property,
                                                                         KRHold& hold) {
  std::vector<Entry> entries;
  const std::optional<size_t> main = KRVCardComposer::mainEntry(person, property);
  person.readEntries(property, hold, [&](const KREntryView& view) {
    const bool isMain = main == entries.size();
    entries.push_back({view, view.address != nullptr ? *view.address : KRAddressView(), isMain});
    return true;
  });
  return entries;
}

void KRVCardEntryRewriter::settleMain() {
  // Where nothing is marked the first entry is the main one: a mark on it may stay.
  const auto isMain = [](const Entry& entry) { return entry.isMain; };
  const auto marked = std::find_if(old_.begin(), old_.end(), isMain);
  if (marked == old_.end() || new_.empty() || std::any_of(new_.begin(), new_.end(), isMain)) return;
  new_.front().isMain = sameValue(marked->view, new_.front().view);
}

KRVCardComposer::Lines KRVCardEntryRewriter::lines(const Entry& entry, const KRVCardRemainder& remainder) {
  return composer_.entry(property_, entry.view, entry.isMain, remainder);
}

KRVCardRemainder KRVCardEntryRewriter::remainder(const Line& line, const Entry& old, const Entry& made) {
  KRVCardRemainder rest;
  const KRVCardParameterParts parts = krPartParameters(line.parameters);
  const bool isSameLabel = sameOrBothEmpty(old.view.label, made.view.label);
  const bool isSameCode = sameOrBothEmpty(old.address.countryCode, made.address.countryCode);
  if (line.meaning == M::AndroidCustom) return rest;
  rest.parameters = parts.others;
  if (old.isMain == made.isMain) rest.ranks = parts.ranks;
  if (property_ == O::Address) {
    const std::string value = outline_.decodedValue(line);
    rest.parts = value.substr(krFurtherParts(value, kKRAddressFieldCount));
  }
  const bool isService = line.meaning == M::ServiceAccount && sameOrBothEmpty(old.view.server, made.view.server);
  if (isSameLabel && (line.meaning == M::TextEntry || line.meaning == M::DateEntry || isService)) rest.name = line.name;
  const bool staysInGroup = !line.group.empty() && (!outline_.sharesGroup(line) || (isSameLabel && isSameCode));
  bool isLabelOfGroup = false;
  for (const Line& each : outline_.lines()) {
    if (line.group.empty() || !krEqualsIgnoringCase(each.group, line.group)) continue;
    const bool givesLabel = each.meaning == M::GroupLabel;
    const bool givesCode = each.meaning == M::GroupCountryCode;
    isLabelOfGroup = isLabelOfGroup || givesLabel;
    if (staysInGroup && ((givesLabel && !isSameLabel) || (givesCode && !isSameCode))) plan_.drop(each);
  }
  if (staysInGroup) {
    rest.group = line.group;
    rest.hasLabelLine = isSameLabel;
    rest.hasCodeLine = isSameCode;
  }
  if (isSameLabel && (staysInGroup || !isLabelOfGroup)) rest.types = parts.types;
  return rest;
}

void KRVCardEntryRewriter::change(size_t old, size_t made) {
  const Line* line = lineOf(old);
  if (line == nullptr) return;
  KRVCardComposer::Lines written = lines(new_[made], remainder(*line, old_[old], new_[made]));
  if (!written.empty() && krEqualsIgnoringCase(written.front().name, line->name)) written.front().name = line->name;
  plan_.replace(*line, written);
}

void KRVCardEntryRewriter::keepMainFirst(const std::vector<std::optional<size_t>>& match) {
  // A rank on a line that was not written again must not beat that of the main entry, or make one where there is none.
  const bool hasMain = std::any_of(new_.begin(), new_.end(), [](const Entry& entry) { return entry.isMain; });
  const bool hadMain = std::any_of(old_.begin(), old_.end(), [](const Entry& entry) { return entry.isMain; });
  uint8_t best = 0;
  std::optional<size_t> winner;
  const auto rankOf = [&](size_t made) -> uint8_t {
    const Line* line = match[made] ? lineOf(*match[made]) : nullptr;
    if (line == nullptr) return new_[made].isMain ? 1 : 0;
    if (plan_.isKept(*line) || old_[*match[made]].isMain == new_[made].isMain) return line->preference;
    return new_[made].isMain ? 1 : 0;
  };
  for (size_t made = 0; made < new_.size(); ++made) {
    const uint8_t rank = rankOf(made);
    if (rank == 0 || (best != 0 && rank >= best)) continue;
    best = rank;
    winner = made;
  }
  if (!hadMain || !winner || (hasMain && new_[*winner].isMain)) return;
  for (size_t made = 0; made < new_.size(); ++made) {
    const Line* line = match[made] ? lineOf(*match[made]) : nullptr;
    if (line == nullptr || line->preference == 0) continue;
    KRVCardRemainder rest = remainder(*line, old_[*match[made]], new_[made]);
    rest.ranks.reset();
    plan_.replace(*line, lines(new_[made], rest));
  }
}

void KRVCardEntryRewriter::plan() {
  const auto match = krMatchEntries(old_.size(), new_.size(), [&](size_t old, size_t made, int stage) {
    const Entry& a = old_[old];
    const Entry& b = new_[made];
    return sameValue(a.view, b.view) &&
           (stage > 0 || (a.isMain == b.isMain && sameOrBothEmpty(a.view.label, b.view.label)));
  });
  std::vector<bool> isUsed(old_.size(), false);
  for (size_t made = 0; made < new_.size(); ++made) {
    if (!match[made]) continue;
    const size_t old = *match[made];
    isUsed[old] = true;
    const bool isSame = sameValue(old_[old].view, new_[made].view) && old_[old].isMain == new_[made].isMain &&
                        sameOrBothEmpty(old_[old].view.label, new_[made].view.label);
    if (!isSame) change(old, made);
  }
  const Line* last = nullptr;
  for (size_t old = 0; old < old_.size(); ++old) {
    const Line* line = lineOf(old);
    if (line == nullptr) continue;
    last = line;
    if (!isUsed[old]) plan_.drop(*line);
  }
  keepMainFirst(match);
  // New entries stand behind the line of the one before, in front of the first that stays, or where the old ones stood.
  const Line* before = nullptr;
  for (size_t made = 0; made < new_.size(); ++made) {
    if (match[made]) {
      before = lineOf(*match[made]);
      continue;
    }
    const Line* next = nullptr;
    for (size_t i = made; before == nullptr && next == nullptr && i < new_.size(); ++i) {
      if (match[i]) next = lineOf(*match[i]);
    }
    const bool isTail = std::none_of(match.begin() + static_cast<std::ptrdiff_t>(made), match.end(),
                                     [](const std::optional<size_t>& each) { return each.has_value(); });
    const KRVCardComposer::Lines written = lines(new_[made], {});
    if (isTail && last != nullptr) {
      plan_.insertBehind(*last, written);
    } else if (before != nullptr) {
      plan_.insertBehind(*before, written);
    } else if (next != nullptr) {
      plan_.insertBefore(*next, written);
    } else {
      plan_.insertAtEnd(written);
    }
  }
}
