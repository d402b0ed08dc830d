#include "issues/KRFindingKey.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string>
#include <vector>

#include "issues/KRIssue.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueNames.h"
#include "issues/KRIssueObject.h"
#include "platform/KRDigest.h"

namespace {

using O = KROrdinal;

/// Texts one after the other so that no two different rows of texts read alike.
class Rows {
 public:
  void add(std::string_view text) { text_.append(std::to_string(text.size())).append(":").append(text); }
  const std::string& text() const noexcept { return text_; }

 private:
  std::string text_;
};

/// What concerns an issue beside the name. `Other` ends a row.
struct Concern {
  KRString issue;
  std::array<O, 4> properties;
};
constexpr Concern kConcerns[] = {
    {KRIssueDuplicateNames, {O::Company, O::Phone, O::Email, O::Other}},
    {KRIssueIncompleteName, {O::Company, O::Other, O::Other, O::Other}},
    {KRIssueBlankName, {O::Company, O::Nickname, O::Phone, O::Email}},
    {KRIssueInvalidCharacters, {O::Phone, O::Email, O::Other, O::Other}},
    {KRIssueDuplicatePhoneNumber, {O::Phone, O::Other, O::Other, O::Other}},
    {KRIssueDuplicateEmailAddress, {O::Email, O::Other, O::Other, O::Other}},
    {KRIssueDuplicateAddress, {O::Address, O::Other, O::Other, O::Other}},
    // The shared value itself is the finding's info.
    {KRIssuePhonesDuplicatedAmongMultipleContacts, {O::Company, O::Other, O::Other, O::Other}},
    {KRIssueEmailsDuplicatedAmongMultipleContacts, {O::Company, O::Other, O::Other, O::Other}},
    {KRIssueUnusualTitle, {O::Title, O::Other, O::Other, O::Other}},
    {KRIssueUnusualSuffix, {O::Suffix, O::Other, O::Other, O::Other}},
    {KRIssueSpacingInTheFirstName, {O::Other, O::Other, O::Other, O::Other}},
    {KRIssueHasCompanyNameNoTitle, {O::Company, O::JobTitle, O::Other, O::Other}},
    {KRIssueNoteWithSpacingOnly, {O::Note, O::Other, O::Other, O::Other}},
    {KRIssueNicknameWithSpacingOnly, {O::Nickname, O::Other, O::Other, O::Other}},
};

std::string entryText(const KREntryView& entry) {
  Rows rows;
  rows.add(entry.text.view());
  rows.add(entry.server.view());
  if (entry.address != nullptr) {
    rows.add(entry.address->countryCode.view());
    for (const KRText field : entry.address->fields) rows.add(field.view());
    if (entry.address->further != nullptr) {
      for (const KRObjectAddress::Field& field : *entry.address->further) {
        rows.add(field.name.view());
        rows.add(field.value.view());
      }
    }
  }
  return rows.text();
}

/// What the person holds of one property: its text, its entries in the order of their texts.
void add(Rows& rows, const IKRPerson& person, O property) {
  KRHold hold;
  rows.add(KRProperty::propertyWithOrdinal(property)->name().view());
  rows.add(person.readText(property, hold).view());
  std::vector<std::string> entries;
  person.readEntries(property, hold, [&](const KREntryView& entry) {
    entries.push_back(entryText(entry));
    return true;
  });
  std::sort(entries.begin(), entries.end());
  for (const std::string& entry : entries) rows.add(entry);
  if (property == O::Thumbnail) {
    const KRRef<KRData> picture = person.thumbnail();
    const KRString digest = picture ? KRDigest::sha256(picture->bytes()) : KRString();
    rows.add(digest.view());
  }
}

std::string textOf(const IKRPerson& person, const Concern* concern) {
  KRHold hold;
  Rows rows;
  const KRNameView name = person.readName(hold);
  for (const KRText part : {name.first, name.middle, name.last}) rows.add(part.view());
  rows.add(person.isOrganization() ? "company" : "");
  if (concern != nullptr) {
    for (const O property : concern->properties) {
      if (property != O::Other) add(rows, person, property);
    }
    return rows.text();
  }
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    if (property->ordinal() != O::Name) add(rows, person, property->ordinal());
  }
  return rows.text();
}

}  // namespace

KRString krFindingKey(const KRIssueObject& finding) {
  const KRRef<KRIssue> issue = finding.issue();
  if (!issue) return {};
  const KRString issueName = issue->name();
  const auto* concern = std::find_if(std::begin(kConcerns), std::end(kConcerns),
                                     [&](const Concern& each) { return sameText(each.issue, issueName); });
  if (concern == std::end(kConcerns)) concern = nullptr;
  Rows rows;
  rows.add("1");
  rows.add(issueName.view());
  const KRValue info = finding.info();
  const KRString about = info.isNothing() ? KRString() : info.description();
  rows.add(about.view());
  std::vector<std::string> persons;
  const KRPersonArray listed = finding.persons();
  for (const IKRPerson* person : listed) persons.push_back(textOf(*person, concern));
  std::sort(persons.begin(), persons.end());
  for (const std::string& person : persons) rows.add(person);
  return KRDigest::sha256(rows.text());
}

KRString krPersonDigest(const IKRPerson& person) {
  Rows rows;
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    const KRRef<KRStoredValue> stored = person.valueByProperty(property);
    if (!stored) continue;
    rows.add(property->name().view());
    rows.add(stored->description().view());
  }
  return KRDigest::sha256(rows.text());
}
