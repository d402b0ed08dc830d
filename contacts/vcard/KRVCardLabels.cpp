#include "contacts/vcard/KRVCardLabels.h"

#include <bit>
#include <string>
#include <unordered_map>

#include "contacts/model/KRLabelTable.h"
#include "contacts/vcard/KRVCardText.h"

namespace {

/// Up to this many pairs of a given value and an entry are simply tried.
constexpr size_t kFewPairs = 4096;

}  // namespace

void KRVCardLabels::start() {
  grouped_.clear();
  given_.clear();
  texts_.clear();
  ranked_ = 0;
}

void KRVCardLabels::add(Entry entry, KROrdinal ordinal, const KRVCardLine& line, KRCardDraft& draft) {
  const KRVCardParameters& parameters = *line.parameters;
  draft.row(entry).label = parameters.label;
  if (!parameters.labelText.isEmpty()) texts_.push_back({entry, draft.place(parameters.labelText.view())});
  if (line.hasGroup()) grouped_.push_back({draft.place(line.group()), entry});
  if (parameters.preference == 0) return;
  Main& main = main_[static_cast<size_t>(ordinal)];
  const uint32_t bit = 1U << static_cast<unsigned>(ordinal);
  if ((ranked_ & bit) == 0 || parameters.preference < main.preference) main = {parameters.preference, entry};
  ranked_ |= bit;
}

void KRVCardLabels::set(Entry entry, std::string_view name, KRCardDraft& draft) {
  if (name.empty()) return;
  const uint16_t number = KRLabelTable::number(name);
  draft.row(entry).label = number;
  if (number == 0) texts_.push_back({entry, draft.place(name)});
}

void KRVCardLabels::giveLabel(std::string_view group, const Place& name, KRCardDraft& draft) {
  given_.push_back({draft.place(group), name, true});
}

void KRVCardLabels::giveCountryCode(std::string_view group, const Place& code, KRCardDraft& draft) {
  given_.push_back({draft.place(group), code, false});
}

void KRVCardLabels::apply(const Given& given, Entry entry, KRCardDraft& draft) {
  if (given.isLabel) {
    // A copy, as the text may move while the label is set.
    set(entry, std::string(draft.text(given.value)), draft);
  } else if (draft.row(entry).what == static_cast<uint8_t>(KROrdinal::Address)) {
    draft.addDetail(entry, KRCardPart::AddressCountryCode, 0, 0, given.value);
  }
}

void KRVCardLabels::finishGroups(KRCardDraft& draft) {
  // Cards have few groups; one made of many must not take the square of their number.
  if (given_.size() * grouped_.size() <= kFewPairs) {
    for (const Given& given : given_) {
      for (const Grouped& each : grouped_) {
        if (krEqualsIgnoringCase(draft.text(each.group), draft.text(given.group))) apply(given, each.entry, draft);
      }
    }
    return;
  }
  // Each entry takes the last label and the last code that its group was given.
  std::unordered_map<std::string, const Given*> labels;
  std::unordered_map<std::string, const Given*> codes;
  for (const Given& given : given_) {
    (given.isLabel ? labels : codes)[krLowerASCII(draft.text(given.group))] = &given;
  }
  for (const Grouped& each : grouped_) {
    const std::string group = krLowerASCII(draft.text(each.group));
    for (const auto* given : {&labels, &codes}) {
      const auto found = given->find(group);
      if (found != given->end()) apply(*found->second, each.entry, draft);
    }
  }
}

void KRVCardLabels::finishTexts(KRCardDraft& draft) {
  // The last label of an entry counts; a mark that no number has keeps the others from it.
  constexpr uint16_t kTaken = 0xFFFF;
  for (auto label = texts_.rbegin(); label != texts_.rend(); ++label) {
    KRCardRow& row = draft.row(label->entry);
    if (row.label != 0) continue;
    row.label = kTaken;
    draft.addDetail(label->entry, KRCardPart::LabelText, 0, 0, label->name);
  }
  for (const TextLabel& label : texts_) {
    KRCardRow& row = draft.row(label.entry);
    if (row.label == kTaken) row.label = 0;
  }
}

void KRVCardLabels::finish(KRCardDraft& draft) {
  finishGroups(draft);
  finishTexts(draft);
  for (uint32_t left = ranked_; left != 0; left &= left - 1) {
    draft.row(main_[static_cast<size_t>(std::countr_zero(left))].entry).detail |= KRCardRow::kMain;
  }
}
