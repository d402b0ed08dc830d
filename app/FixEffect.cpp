#include "app/FixEffect.h"

#include <algorithm>
#include <utility>

#include "app/PersonText.h"
#include "contacts/KRTempPerson.h"
#include "handles/KRHandleNames.h"
#include "handles/KRIssueHandle.h"
#include "issues/KRNameConstraintManager.h"

namespace {

struct Row {
  KRString handle;
  FixKind kind;
};

constexpr Row kKinds[] = {
    {KRHandleNameEdit, FixKind::Nothing},
    {KRHandleNameIgnore, FixKind::Nothing},
    {KRHandleNameMergeContact, FixKind::Merge},
    {KRHandleNameDeleteDuplicatePerson, FixKind::Deletion},
    {KRHandleNameDeleteContact, FixKind::Deletion},
    {KRHandleNameDeleteDublicatProperty, FixKind::Values},
    {KRHandleNameDeleteProperty, FixKind::Values},
    {KRHandleNameRemoveSpace, FixKind::Values},
    {KRHandleNameUseDefaultString, FixKind::Values},
    {KRHandleNameAddSupport, FixKind::Settings},
};

/// The prefixes, then the suffixes, that count as usual.
KRStringList allowedTexts() {
  KRNameConstraintManager& settings = KRNameConstraintManager::ShareNameConstrainManager();
  KRStringList texts = settings.prefixItemArray();
  texts.insert(texts.end(), settings.suffixItemArray().begin(), settings.suffixItemArray().end());
  return texts;
}

}  // namespace

FixKind fixKindOf(KRText handleName) {
  for (const Row& row : kKinds) {
    if (sameText(row.handle, handleName)) return row.kind;
  }
  return FixKind::Nothing;
}

FixWatch::FixWatch(const KRIssueObject& finding, KRText handleName, Detail detail) {
  effect_.kind = fixKindOf(handleName);
  effect_.persons = finding.persons();
  if (effect_.persons.isEmpty()) return;
  if (detail == Detail::All) {
    for (const IKRPerson* person : effect_.persons) effect_.names.push_back(personText(*person));
  }
  switch (effect_.kind) {
    case FixKind::Values:
      effect_.before = PersonRows::whole(*effect_.persons.first());
      break;
    case FixKind::Merge:
      if (detail == Detail::All) foreseeMerge(finding);
      for (IKRPerson* person : effect_.persons) effect_.trashed.emplace_back(person);
      break;
    case FixKind::Deletion:
      if (sameText(handleName, KRHandleNameDeleteContact)) {
        effect_.trashed.emplace_back(effect_.persons.first());
      } else {
        for (size_t i = 1; i < effect_.persons.count(); ++i) effect_.trashed.emplace_back(effect_.persons.at(i));
      }
      break;
    case FixKind::Settings:
      allowedBefore_ = allowedTexts();
      break;
    case FixKind::Nothing:
      break;
  }
}

/// The merged contact's values by the merge's own rules. The contact itself stands somewhere in the book afterwards,
/// where finding it would cost a walk.
void FixWatch::foreseeMerge(const KRIssueObject& finding) {
  const KRRef<KRIssueHandle> merge = KRIssueHandle::issueHandleWithName(KRHandleNameMergeContact);
  const KRPersonArray persons = finding.persons();
  const auto merged = krMake<KRTempPerson>();
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    const KRRef<KRStoredValue> value = property->isMultiple()
                                           ? KRRef<KRStoredValue>(merge->mergeMultipleValue(property, persons))
                                           : merge->mergeSingleValue(property, persons);
    if (value) merged->setValue(value, property);
  }
  effect_.before = PersonRows::whole(*persons.first());
  effect_.after = PersonRows::whole(*merged);
}

FixEffect FixWatch::effect() {
  if (effect_.kind == FixKind::Values) effect_.after = PersonRows::whole(*effect_.persons.first());
  if (effect_.kind == FixKind::Settings) {
    for (const KRString& text : allowedTexts()) {
      const auto known = std::find(allowedBefore_.begin(), allowedBefore_.end(), text);
      if (known != allowedBefore_.end()) {
        allowedBefore_.erase(known);
      } else {
        effect_.allowed = text.view();
      }
    }
  }
  return std::move(effect_);
}

FixEffect fixFinding(KRIssueObject& finding, const KRRef<KRIssueHandle>& handle, FixWatch::Detail detail) {
  const KRRef<KRIssueObject> alive(&finding);
  FixWatch watch(finding, handle->name(), detail);
  finding.setHandle(handle);
  finding.fix();
  return watch.effect();
}
