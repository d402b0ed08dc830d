#include "app/PlanValues.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "app/DisplayText.h"
#include "contacts/model/KRObjectPersonName.h"
#include "issues/KRIssueNames.h"

namespace {

using Json = nlohmann::json;
using O = KROrdinal;

struct Row {
  KRString issue;
  std::array<const KRString*, 2> names;
};
constexpr Row kRows[] = {
    {KRIssueInvalidCharacters, {&KRProPertyPhone, &KRProPertyEmail}},
    {KRIssueHasCompanyNameNoTitle, {&KRProPertyJobTitle, nullptr}},
    {KRIssueBlankName, {&KRProPertyName, nullptr}},
    {KRIssueIncompleteName, {&KRProPertyName, nullptr}},
    {KRIssueSpacingInTheFirstName, {&KRProPertyName, nullptr}},
    {KRIssueUnusualTitle, {&KRProPertyTitle, nullptr}},
    {KRIssueUnusualSuffix, {&KRProPertySuffix, nullptr}},
    {KRIssueNoteWithSpacingOnly, {&KRProPertyNote, nullptr}},
    {KRIssueDuplicatePhoneNumber, {&KRProPertyPhone, nullptr}},
    {KRIssueDuplicateEmailAddress, {&KRProPertyEmail, nullptr}},
};
constexpr std::array<const char*, 3> kNameParts = {"first", "middle", "last"};

/// The kinds of values that a plan can carry.
enum class Form { None, Text, Name, Texts };

Form formOf(const KRProperty& property) {
  if (property.ordinal() == O::Name) return Form::Name;
  if (property.isMultiple()) {
    const int32_t kind = property.subValueType();
    const bool isText = kind == KRValueType::Text || kind == KRValueType::Phone || kind == KRValueType::Email;
    return isText ? Form::Texts : Form::None;
  }
  const bool isText = property.valueType() == KRValueType::Text && property.ordinal() != O::IsOrganization;
  return isText ? Form::Text : Form::None;
}

nlohmann::ordered_json textOrNull(KRText text) {
  return text.isNothing() ? nlohmann::ordered_json() : nlohmann::ordered_json(std::string(text.view()));
}

KRString textIn(const Json& value) {
  return value.is_null() ? KRString() : KRString(value.get_ref<const std::string&>());
}

bool isTextOrNull(const Json& value) {
  return value.is_null() || value.is_string();
}

KRRef<KRMutableMultipleValue> entriesOf(const IKRPerson& person, const KRProperty& property) {
  const KRRef<KRStoredValue> stored = person.valueByProperty(&property);
  return KRRef<KRMutableMultipleValue>(dynamic_cast<KRMutableMultipleValue*>(stored.get()));
}

KRString entryText(const KRMutableSingleValue& entry) {
  if (const auto* phone = entry.value().as<KRObjectPhone>()) return phone->phoneNumber();
  if (const auto* email = entry.value().as<KRObjectEmail>()) return email->email();
  return entry.value().text();
}

KRValue entryValue(const KRString& text, const KRProperty& property) {
  if (property.subValueType() == KRValueType::Phone) return krMake<KRObjectPhone>(text);
  if (property.subValueType() == KRValueType::Email) return krMake<KRObjectEmail>(text);
  return text;
}

std::string checkName(const Json& value) {
  if (!value.is_object()) return "an object of first, middle and last is expected";
  for (const auto& [part, text] : value.items()) {
    const auto is = [&, &key = part](const char* known) { return key == known; };
    if (std::none_of(kNameParts.begin(), kNameParts.end(), is)) return "a name has first, middle and last";
    if (!isTextOrNull(text)) return "a part of a name is a text or null";
  }
  return {};
}

std::string checkForm(const Json& value, Form form) {
  switch (form) {
    case Form::Text:
      return isTextOrNull(value) ? "" : "a text or null is expected";
    case Form::Name:
      return checkName(value);
    case Form::Texts:
      if (!value.is_array() || !std::all_of(value.begin(), value.end(), isTextOrNull)) {
        return "a list of texts is expected";
      }
      return {};
    case Form::None:
      break;
  }
  return "a plan cannot set this property";
}

void setText(const Json& value, const KRProperty& property, IKRPerson& person) {
  KRHold hold;
  const KRString text = textIn(value);
  if (person.readText(property.ordinal(), hold).view() == text.view()) return;
  person.setValue(text.isEmpty() ? KRRef<KRStoredValue>() : KRRef<KRStoredValue>(krSingleValue(text, property)),
                  &property);
}

void setName(const Json& value, const KRProperty& property, IKRPerson& person) {
  KRHold hold;
  const KRNameView before = person.readName(hold);
  const std::array<KRText, 3> old = {before.first, before.middle, before.last};
  std::array<KRString, 3> parts;
  bool isSame = true;
  for (size_t i = 0; i < parts.size(); ++i) {
    // What is not said stays.
    parts[i] = value.contains(kNameParts[i]) ? textIn(value[kNameParts[i]]) : KRString(old[i]);
    isSame = isSame && parts[i].view() == old[i].view();
    if (parts[i].isEmpty()) parts[i] = {};
  }
  if (isSame) return;
  KRRef<KRStoredValue> name;
  const bool hasAny = std::any_of(parts.begin(), parts.end(), [](const KRString& part) { return !part.isEmpty(); });
  if (hasAny) name = krSingleValue(krMake<KRObjectPersonName>(parts[0], parts[1], parts[2]), property);
  person.setValue(name, &property);
}

void setTexts(const Json& value, const KRProperty& property, IKRPerson& person) {
  const KRRef<KRMutableMultipleValue> before = entriesOf(person, property);
  const auto after = krMake<KRMutableMultipleValue>();
  bool isSame = true;
  for (size_t i = 0; i < value.size(); ++i) {
    const KRMutableSingleValue* old = before ? before->valueAtIndex(i) : nullptr;
    const KRString text = textIn(value[i]);
    if (old != nullptr && entryText(*old) == text) {
      after->addValue(KRRef<KRMutableSingleValue>(before->valueAtIndex(i)));
      if (before->mainIndex() == i) after->setMainIndex(after->count() - 1);
      continue;
    }
    isSame = false;
    if (text.isEmpty()) continue;
    const KRRef<KRLabel> label = old != nullptr ? old->label() : KRRef<KRLabel>();
    after->addValue(krMake<KRMutableSingleValue>(entryValue(text, property), label, property.subValueType()));
    if (before && before->mainIndex() == i) after->setMainIndex(after->count() - 1);
  }
  if (isSame) return;
  person.setValue(after->count() == 0 ? KRRef<KRStoredValue>() : KRRef<KRStoredValue>(after), &property);
}

}  // namespace

std::vector<const KRProperty*> PlanValues::editable(KRText issueName) {
  std::vector<const KRProperty*> properties;
  for (const Row& row : kRows) {
    if (!sameText(row.issue, issueName)) continue;
    for (const KRString* name : row.names) {
      if (name != nullptr) properties.push_back(KRProperty::propertyWithName(*name));
    }
  }
  return properties;
}

nlohmann::ordered_json PlanValues::of(const IKRPerson& person, const std::vector<const KRProperty*>& properties) {
  nlohmann::ordered_json values = nlohmann::ordered_json::object();
  KRHold hold;
  for (const KRProperty* property : properties) {
    nlohmann::ordered_json& value = values[std::string(property->name().view())];
    switch (formOf(*property)) {
      case Form::Text:
        value = textOrNull(person.readText(property->ordinal(), hold));
        break;
      case Form::Name: {
        const KRNameView name = person.readName(hold);
        value["first"] = textOrNull(name.first);
        value["middle"] = textOrNull(name.middle);
        value["last"] = textOrNull(name.last);
        break;
      }
      case Form::Texts:
        value = nlohmann::ordered_json::array();
        if (const auto entries = entriesOf(person, *property)) {
          for (size_t i = 0; i < entries->count(); ++i)
            value.push_back(textOrNull(entryText(*entries->valueAtIndex(i))));
        }
        break;
      case Form::None:
        break;
    }
  }
  return values;
}

std::string PlanValues::check(const nlohmann::json& values) {
  if (!values.is_object()) return "an object is expected";
  for (const auto& [name, value] : values.items()) {
    std::string sentence = "\"" + fittedText(shownText(name), 100) + "\"";
    const KRProperty* property = KRProperty::propertyWithName(std::string_view(name));
    if (property == nullptr) return sentence.append(" is no property");
    const std::string wrong = checkForm(value, formOf(*property));
    if (!wrong.empty()) return sentence.append(": ").append(wrong);
  }
  return {};
}

std::string PlanValues::check(const nlohmann::json& values, const IKRPerson& person) {
  for (const auto& [name, value] : values.items()) {
    const KRProperty* property = KRProperty::propertyWithName(std::string_view(name));
    if (formOf(*property) != Form::Texts) continue;
    const size_t count = person.entryCount(property->ordinal());
    if (value.size() != count) {
      return "\"" + name + "\" has " + counted(value.size(), "text", "texts") + ", and the contact " +
             counted(count, "entry", "entries");
    }
  }
  return {};
}

void PlanValues::set(const nlohmann::json& values, IKRPerson& person) {
  for (const auto& [name, value] : values.items()) {
    const KRProperty* property = KRProperty::propertyWithName(std::string_view(name));
    const Form form = formOf(*property);
    if (form == Form::Text) setText(value, *property, person);
    if (form == Form::Name) setName(value, *property, person);
    if (form == Form::Texts) setTexts(value, *property, person);
  }
}
