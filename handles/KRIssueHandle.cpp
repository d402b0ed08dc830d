#include "handles/KRIssueHandle.h"

#include <charconv>

#include "contacts/model/IKRPerson.h"
#include "issues/KRIssue.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueFindResult.h"
#include "issues/KRIssueNames.h"
#include "issues/KRIssueObject.h"
#include "platform/KRFatal.h"
#include "platform/KRSupportFuction.h"

namespace {

struct Text {
  KRString key;
  KRString text;
};

constexpr Text kTitles[] = {
    {KRHandleNameEdit, "Edit"_kr},
    {KRHandleNameMergeContact, "Merge"_kr},
    {KRHandleNameIgnore, "Ignore"_kr},
};

// What Edit says, by issue.
constexpr Text kEditInfos[] = {
    {KRIssueDuplicateNames, "View Contact details and merge duplicate Contacts."_kr},
    {KRIssueBlankName, "View Contact details and add contact name."_kr},
    {KRIssueEmailsDuplicatedAmongMultipleContacts, "View Contact details and manage duplicate email addresses."_kr},
    {KRIssuePhonesDuplicatedAmongMultipleContacts, "View Contact details and manage duplicate phone numbers."_kr},
    {KRIssueIncompleteName, "View Contact details and complete the missing First or Last name."_kr},
    {KRIssueInvalidCharacters, "View Contact details and fix the invalid characters."_kr},
    {KRIssueHasCompanyNameNoTitle, "View Contact details and set job title."_kr},
    {KRIssueNoteWithSpacingOnly, "View Contact details and add contact notes."_kr},
};

// What Ignore says, by issue: a fixed sentence for values shared among contacts, the localised one for all others; kept
// so on purpose.
constexpr Text kIgnoreInfos[] = {
    {KRIssueEmailsDuplicatedAmongMultipleContacts, "This conflict will be ignored."_kr},
    {KRIssuePhonesDuplicatedAmongMultipleContacts, "This conflict will be ignored."_kr},
};

template <size_t N>
KRString find(const Text (&table)[N], const KRString& key) {
  for (const Text& row : table) {
    if (sameText(row.key, key)) return row.text;
  }
  return nullptr;
}

KRString ifNothing(KRString text, const KRString& otherwise) {
  return text.isNothing() ? otherwise : text;
}

KRRef<KRIssueFindResult> resultOf(const KRIssueObject& finding) {
  const KRRef<KRIssueContext> context = finding.issueContext();
  return context ? context->issueFindResult() : KRRef<KRIssueFindResult>();
}

/// The persons whom a fix of that name has deleted.
std::vector<KRRef<IKRPerson>> deletedPersons(const KRString& handleName, const KRPersonArray& persons) {
  if (sameText(handleName, KRHandleNameDeleteContact)) return {KRRef<IKRPerson>(persons.first())};
  std::vector<KRRef<IKRPerson>> deleted;
  if (sameText(handleName, KRHandleNameDeleteDuplicatePerson)) {
    if (persons.isEmpty()) KRFatal("a finding without persons has no duplicates to delete");
    for (size_t i = 1; i < persons.count(); ++i) deleted.emplace_back(persons.at(i));
  } else if (sameText(handleName, KRHandleNameMergeContact)) {
    for (IKRPerson* person : persons) deleted.emplace_back(person);
  }
  return deleted;
}

}  // namespace

void KRIssueHandle::fix(KRIssueObject* finding) {
  fix(finding, KRFlagProgress());
}

void KRIssueHandle::fix(KRIssueObject* finding, [[maybe_unused]] const KRFlagProgress& progress) {
  resetFindResult(finding);
}

KRRef<IKRPerson> KRIssueHandle::indirectFix([[maybe_unused]] KRIssueObject* finding) {
  return {};
}

void KRIssueHandle::resetFindResult(KRIssueObject* finding) {
  if (finding == nullptr) return;
  const KRRef<KRIssueObject> alive(finding);
  const KRRef<KRIssueFindResult> result = resultOf(*finding);
  for (const KRRef<IKRPerson>& person : deletedPersons(name_, finding->persons())) {
    const KRList<KRIssueObject>* indexed = result ? result->issueObjectsOfPerson(person.get()) : nullptr;
    if (indexed == nullptr) continue;
    // A copy, since the list changes below.
    for (const KRRef<KRIssueObject>& other : indexed->copy()) {
      const KRPersonArray persons = other->persons();
      if (other == alive || !persons.contains(person.get())) continue;
      // A pair of which one is gone has lost its meaning; a larger group keeps its remaining members.
      if (persons.count() < 3) {
        removeObject(other.get());
      } else {
        other->removePerson(person.get());
      }
      result->removeObjectForPerson(other.get(), person.get());
    }
  }
  removeObject(finding);
}

void KRIssueHandle::removeObject(KRIssueObject* finding) {
  if (finding == nullptr) return;
  const KRRef<KRIssueObject> alive(finding);
  const KRRef<KRIssueContext> context = finding->issueContext();
  if (!context) return;
  const KRRef<KRIssueFindResult> result = context->issueFindResult();
  if (result) {
    const KRPersonArray persons = finding->persons();
    for (const IKRPerson* person : persons) result->removeObjectForPerson(finding, person);
  }
  context->removeIssueObject(finding);
  if (result && context->objects().isEmpty()) result->removeContext(context.get());
}

KRString KRIssueHandle::personAd(const IKRPerson* person) {
  char digits[24];
  const auto [end, error] = std::to_chars(std::begin(digits), std::end(digits), reinterpret_cast<intptr_t>(person));
  return KRString::trusted(std::string_view(digits, static_cast<size_t>(end - digits)));
}

KRString KRIssueHandle::title([[maybe_unused]] KRIssueObject* finding) const {
  return ifNothing(find(kTitles, name_), name_);
}

KRString KRIssueHandle::resultInfo(KRIssueObject* finding) const {
  if (sameText(name_, KRHandleNameMergeContact)) {
    return "The duplicate contacts will be merged into the contact in the first column. You can manually edit it."_kr;
  }
  if (sameText(name_, KRHandleNameEdit)) return ifNothing(find(kEditInfos, issueName(finding)), ""_kr);
  if (!sameText(name_, KRHandleNameIgnore)) return ""_kr;
  const KRString fixed = find(kIgnoreInfos, issueName(finding));
  return fixed.isNothing() ? KRSupportFuction::loadString("KR_IssueSolution_Info_Ignored"_kr) : fixed;
}

KRString KRIssueHandle::issueName(const KRIssueObject* finding) {
  const KRRef<KRIssue> issue = finding != nullptr ? finding->issue() : KRRef<KRIssue>();
  return issue ? issue->name() : KRString();
}
