#include "app/MergeReport.h"

#include <algorithm>

#include "app/DisplayText.h"
#include "app/PersonCard.h"
#include "app/PersonDocument.h"
#include "app/PersonRows.h"
#include "contacts/KRTempPerson.h"
#include "contacts/model/KRObjectPersonName.h"

namespace {

using Fate = KRMergedValue::Fate;

struct FateText {
  Fate fate;
  const char* word;
  const char* key;
  Style style;
};
constexpr FateText kFates[] = {
    {Fate::Kept, "kept", "kept", Style::Plain},
    {Fate::Equal, "equal", "equal", Style::Faint},
    {Fate::Left, "trash", "trash", Style::Warning},
};
constexpr size_t kFateWidth = 7;
constexpr size_t kNameWidth = 16;
/// Of a longer text the beginning is shown; the trash has all of it.
constexpr size_t kLongest = 240;

const FateText& textOf(Fate fate) {
  return *std::find_if(std::begin(kFates), std::end(kFates), [&](const FateText& each) { return each.fate == fate; });
}

std::string nameOf(const KRMergedValue& value) {
  if (value.group) return "Group";
  return value.property != nullptr ? std::string(value.property->displayName().view()) : "Card line";
}

std::string labelOf(const KRRef<KRLabel>& label) {
  return label ? shownText(label->name().view()) : std::string();
}

/// The value as it stands on a contact's card: as that of a contact that holds nothing else.
std::string valueText(const KRMergedValue& value) {
  if (const KRString* text = value.value.asText()) return std::string(text->view());
  if (const auto* name = value.value.as<KRObjectPersonName>()) return std::string(name->displayString().view());
  KRRef<KRStoredValue> stored = krSingleValue(value.value, *value.property);
  if (value.property->isMultiple()) {
    auto entries = krMake<KRMutableMultipleValue>();
    entries->addValue(krMake<KRMutableSingleValue>(value.value, nullptr, value.property->subValueType()));
    stored = std::move(entries);
  }
  const auto person = krMake<KRTempPerson>();
  person->setValue(stored, value.property);
  const std::vector<PersonRow> rows = PersonRows::whole(*person);
  return rows.empty() ? std::string(value.value.description().view()) : rows.front().text;
}

/// "home  +49 30 1 (kept as work)".
std::string shown(const KRMergedValue& value) {
  std::string text = labelOf(value.label);
  text += (text.empty() ? "" : "  ") + shownText(valueText(value));
  text = fittedText(text, kLongest);
  if (value.keptLabel) text += " (kept as " + labelOf(value.keptLabel) + ")";
  return text;
}

/// "Name, Note (2), Card line".
std::string listOfNames(const std::vector<KRMergedValue>& account, Fate fate) {
  std::vector<std::pair<std::string, size_t>> names;
  for (const KRMergedValue& value : account) {
    if (value.fate != fate) continue;
    const std::string name = nameOf(value);
    const auto known = std::find_if(names.begin(), names.end(), [&](const auto& each) { return each.first == name; });
    if (known == names.end()) {
      names.emplace_back(name, 1);
    } else {
      ++known->second;
    }
  }
  std::string list;
  for (const auto& [name, count] : names) {
    list += (list.empty() ? "" : ", ") + name + (count > 1 ? " (" + std::to_string(count) + ")" : "");
  }
  return list;
}

}  // namespace

size_t MergeReport::count(Fate fate) const {
  return static_cast<size_t>(
      std::count_if(account.begin(), account.end(), [&](const KRMergedValue& each) { return each.fate == fate; }));
}

void MergeReport::print(Terminal& terminal, size_t place) const {
  terminal.paragraph("The merged contact", Style::Heading);
  PersonCard::print(terminal, *merged, place + 1, std::max<size_t>(std::to_string(place + 1).size(), 2));
  for (size_t person = 0; person < sources.size(); ++person) {
    terminal.line();
    terminal.paragraph(sources[person].text + ", " + shownText(sources[person].ID.view()), Style::Heading);
    for (const KRMergedValue& value : account) {
      if (value.person != person) continue;
      const FateText& fate = textOf(value.fate);
      const std::string name = fittedText(nameOf(value), kNameWidth - 1);
      std::string line = fate.word;
      line.resize(kFateWidth, ' ');
      line += name + padding(name, kNameWidth) + shown(value);
      terminal.paragraph(line, fate.style, 2, kFateWidth + kNameWidth);
    }
  }
  terminal.line();
  const size_t left = count(Fate::Left);
  std::string sum = counted(account.size(), "value", "values") + ": " + std::to_string(count(Fate::Kept)) + " kept, " +
                    std::to_string(count(Fate::Equal)) + " equal to a kept one, " + std::to_string(left) +
                    " left only in the trash";
  if (left > 0) sum += ": " + listOfNames(account, Fate::Left);
  terminal.paragraph(sum);
}

void MergeReport::write(JsonWriter& json, size_t place) const {
  json.key("merged");
  PersonDocument::write(json, *merged, place);
  json.key("counts");
  json.beginObject(JsonWriter::Layout::OneLine);
  for (const FateText& fate : kFates) {
    json.key(fate.key);
    json.whole(count(fate.fate));
  }
  json.endObject();
  json.key("persons");
  json.beginArray();
  for (size_t person = 0; person < sources.size(); ++person) {
    json.beginObject();
    json.key("id");
    json.textOrNull(sources[person].ID);
    json.key("values");
    json.beginArray();
    for (const KRMergedValue& value : account) {
      if (value.person != person) continue;
      json.beginObject(JsonWriter::Layout::OneLine);
      json.key("property");
      json.textOrNull(value.property != nullptr ? value.property->name() : KRString());
      json.key("group");
      json.textOrNull(value.group ? value.group->uniqueId() : KRString());
      json.key("label");
      json.textOrNull(value.label ? value.label->name() : KRString());
      json.key("value");
      PersonDocument::writeValue(json, value.value);
      json.key("fate");
      json.text(textOf(value.fate).key);
      json.key("keptLabel");
      json.textOrNull(value.keptLabel ? value.keptLabel->name() : KRString());
      json.endObject();
    }
    json.endArray();
    json.endObject();
  }
  json.endArray();
}
