#include "handles/KRIssueHandle.h"

#include <charconv>
#include <iterator>
#include <span>
#include <string_view>
#include <vector>

#include "handles/KRHandleTexts.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueFindResult.h"
#include "issues/KRIssueNames.h"
#include "issues/KRIssueObject.h"
#include "platform/KRFatal.h"
#include "platform/KRSupportFuction.h"

namespace {

constexpr KRHandleTexts kEdit[] = {
    {KRIssueDuplicateNames, "Edit"_kr, "View Contact details and merge duplicate Contacts."_kr},
    {KRIssueBlankName, "Edit"_kr, "View Contact details and add contact name."_kr},
    {KRIssueEmailsDuplicatedAmongMultipleContacts, "Edit"_kr,
     "View Contact details and manage duplicate email addresses."_kr},
    {KRIssuePhonesDuplicatedAmongMultipleContacts, "Edit"_kr,
     "View Contact details and manage duplicate phone numbers."_kr},
    {KRIssueIncompleteName, "Edit"_kr, "View Contact details and complete the missing First or Last name."_kr},
    {KRIssueInvalidCharacters, "Edit"_kr, "View Contact details and fix the invalid characters."_kr},
    {KRIssueHasCompanyNameNoTitle, "Edit"_kr, "View Contact details and set job title."_kr},
    {KRIssueNoteWithSpacingOnly, "Edit"_kr, "View Contact details and add contact notes."_kr},
    {nullptr, "Edit"_kr, ""_kr},
};

constexpr KRHandleTexts kMerge[] = {
    {nullptr, "Merge"_kr,
     "The duplicate contacts will be merged into the contact in the first column. You can manually edit it."_kr},
};

// A fixed sentence for values shared among contacts, a localised one (nothing here) for all others; kept so on purpose.
constexpr KRHandleTexts kIgnore[] = {
    {KRIssueEmailsDuplicatedAmongMultipleContacts, "Ignore"_kr, "This conflict will be ignored."_kr},
    {KRIssuePhonesDuplicatedAmongMultipleContacts, "Ignore"_kr, "This conflict will be ignored."_kr},
    {nullptr, "Ignore"_kr, nullptr},
};

/// The texts of a handle that has no class of its own, by its name; none for a name that is not known.
std::span<const KRHandleTexts> textsOf(const KRString& handleName) {
  if (sameText(handleName, KRHandleNameEdit)) return kEdit;
  if (sameText(handleName, KRHandleNameMergeContact)) return kMerge;
  if (sameText(handleName, KRHandleNameIgnore)) return kIgnore;
  return {};
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

KRString KRIssueHandle::title(KRIssueObject* finding) const {
  const auto rows = textsOf(name_);
  return rows.empty() ? name_ : krHandleTexts(rows, finding).title;
}

KRString KRIssueHandle::resultInfo(KRIssueObject* finding) const {
  const auto rows = textsOf(name_);
  if (rows.empty()) return ""_kr;
  const KRString& text = krHandleTexts(rows, finding).resultInfo;
  return text.isNothing() ? KRSupportFuction::loadString("KR_IssueSolution_Info_Ignored"_kr) : text;
}
