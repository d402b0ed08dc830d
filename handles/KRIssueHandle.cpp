#include "handles/KRIssueHandle.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <span>
#include <string_view>
#include <vector>

#include "contacts/KRTrashAddressBook.h"
#include "contacts/model/ABPerson.h"
#include "contacts/model/KRAddressBook.h"
#include "contacts/stores/KRStoredBook.h"
#include "contacts/vcard/KRVCardGroupRewriter.h"
#include "contacts/vcard/KRVCardJoiner.h"
#include "contacts/vcard/KRVCardReader.h"
#include "contacts/vcard/KRVCardRewriter.h"
#include "handles/KRHandleFinding.h"
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

/// Whom of a finding's persons a fix deletes.
enum class Deleted : uint8_t { Nobody, TheFirst, AllButTheFirst, All };

Deleted deletedBy(const KRString& handleName) {
  if (sameText(handleName, KRHandleNameDeleteContact)) return Deleted::TheFirst;
  if (sameText(handleName, KRHandleNameDeleteDuplicatePerson)) return Deleted::AllButTheFirst;
  if (sameText(handleName, KRHandleNameMergeContact)) return Deleted::All;
  return Deleted::Nobody;
}

/// The persons whom a fix of that name has deleted.
std::vector<KRRef<IKRPerson>> deletedPersons(const KRString& handleName, const KRPersonArray& persons) {
  const Deleted who = deletedBy(handleName);
  if (who == Deleted::Nobody) return {};
  if (who == Deleted::TheFirst) return {KRRef<IKRPerson>(persons.first())};
  if (who == Deleted::AllButTheFirst && persons.isEmpty())
    KRFatal("a finding without persons has no duplicates to delete");
  std::vector<KRRef<IKRPerson>> deleted;
  for (size_t i = who == Deleted::All ? 0 : 1; i < persons.count(); ++i) deleted.emplace_back(persons.at(i));
  return deleted;
}

/// Gives a new record the lines of the persons' cards that no property holds, so that a store of cards writes them too.
void joinCards(IKRPerson& merged, const KRPersonArray& persons) {
  auto* record = dynamic_cast<ABPerson*>(&merged);
  if (record == nullptr) return;
  std::vector<const ABPerson*> read;
  for (const IKRPerson* person : persons) {
    if (const auto* each = dynamic_cast<const ABPerson*>(person)) read.push_back(each);
  }
  const KRCardRecord joined = krJoinedCard(read);
  if (joined.card().empty()) return;
  // With the identifier of the new person, which would be another one whenever the card is read anew.
  const KRString UID = record->baseID();
  const std::vector<KRVCardEdit> edits = KRVCardGroupRewriter::identifyingEdits(joined.card(), UID);
  const KRRef<ABPerson> identified = KRVCardReader::readOne(KRVCardRewriter::applied(joined.card(), edits));
  record->setRecord(identified ? identified->record() : joined);
}

/// Puts a new record into all groups of the persons.
void joinGroups(KRAddressBook& book, IKRPerson& merged, const KRPersonArray& persons) {
  auto* stored = dynamic_cast<KRStoredBook*>(&book);
  auto* record = dynamic_cast<ABPerson*>(&merged);
  if (stored == nullptr || record == nullptr) return;
  std::vector<KRRef<KRGroup>> joined;
  for (const IKRPerson* person : persons) {
    for (KRRef<KRGroup>& group : person->parentGroups()) {
      if (std::find(joined.begin(), joined.end(), group) == joined.end()) joined.push_back(std::move(group));
    }
  }
  if (!joined.empty()) stored->setGroups(*record, std::move(joined));
}

}  // namespace

void KRIssueHandle::fix(KRIssueObject* finding) {
  if (!sameText(name(), KRHandleNameMergeContact)) {
    fix(finding, KRFlagProgress());
    return;
  }
  if (finding == nullptr) return;
  indirectFix(finding);
  const KRRef<KRAddressBook> book = krBookOf(finding);
  KRTrashAddressBook* trash = KRTrashAddressBook::ShareTrashAddressBook();
  const KRPersonArray persons = finding->persons();
  trash->addPersons(persons);
  if (book) book->removePersons(persons);
  // In this order on purpose. A host that wants the trash written first, and all of a batch at once, opens a
  // `KRSaveScope`.
  if (book) book->save();
  trash->save();
  resetFindResult(finding);
}

void KRIssueHandle::fix(KRIssueObject* finding, [[maybe_unused]] const KRFlagProgress& progress) {
  resetFindResult(finding);
}

bool KRIssueHandle::deletesPersons() const {
  return deletedBy(name()) != Deleted::Nobody;
}

KRRef<IKRPerson> KRIssueHandle::indirectFix(KRIssueObject* finding) {
  if (finding == nullptr || !sameText(name(), KRHandleNameMergeContact)) return {};
  const KRRef<KRAddressBook> book = krBookOf(finding);
  if (!book) return {};
  const KRPersonArray persons = finding->persons();
  KRRef<IKRPerson> merged = book->newPerson();
  if (!merged) return {};
  joinCards(*merged, persons);
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    const KRRef<KRStoredValue> value = property->isMultiple()
                                           ? KRRef<KRStoredValue>(mergeMultipleValue(property, persons))
                                           : mergeSingleValue(property, persons);
    if (value) merged->setValue(value, property);
  }
  joinGroups(*book, *merged, persons);
  return merged;
}

void KRIssueHandle::resetFindResult(KRIssueObject* finding) {
  if (finding == nullptr) return;
  const KRRef<KRIssueObject> alive(finding);
  const KRRef<KRIssueFindResult> result = krResultOf(finding);
  // The finding's own handle says what was done to it; one that a host fixes without having set it stands for itself.
  const KRRef<KRIssueHandle> chosen = finding->handle();
  const KRString did = chosen ? chosen->name() : name();
  for (const KRRef<IKRPerson>& person : deletedPersons(did, finding->persons())) {
    if (!result) continue;
    // A copy, since the list changes below.
    for (const KRRef<KRIssueObject>& other : result->copyOfIssueObjects(person.get())) {
      if (other == alive || !other->listsPerson(person.get())) continue;
      // A pair of which one is gone has lost its meaning; a larger group keeps its remaining members.
      if (other->personCount() < 3) {
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
  const auto rows = textsOf(name());
  return rows.empty() ? name() : krHandleTexts(rows, finding).title;
}

KRString KRIssueHandle::resultInfo(KRIssueObject* finding) const {
  const auto rows = textsOf(name());
  if (rows.empty()) return ""_kr;
  const KRString& text = krHandleTexts(rows, finding).resultInfo;
  return text.isNothing() ? KRSupportFuction::loadString("KR_IssueSolution_Info_Ignored"_kr) : text;
}
