#include "app/HandleNames.h"

#include "app/NameWords.h"
#include "app/Unusable.h"
#include "handles/KRHandleNames.h"
#include "platform/KRASCII.h"

namespace {

struct Row {
  KRString name;
  std::string_view shortName;
};

// "duplicate" is spelled as people do; the constant's own spelling is a word for it too.
constexpr Row kRows[] = {
    {KRHandleNameEdit, "edit"},
    {KRHandleNameIgnore, "ignore"},
    {KRHandleNameMergeContact, "merge"},
    {KRHandleNameDeleteDuplicatePerson, "delete-duplicates"},
    {KRHandleNameDeleteContact, "delete-contact"},
    {KRHandleNameDeleteDublicatProperty, "delete-duplicate-values"},
    {KRHandleNameDeleteProperty, "delete-field"},
    {KRHandleNameRemoveSpace, "remove-space"},
    {KRHandleNameUseDefaultString, "use-default-string"},
    {KRHandleNameAddSupport, "add-to-list"},
};

constexpr std::string_view kPrefix = "KRHandleName";

bool isNameOf(const Row& row, std::string_view word) {
  const std::string_view name = row.name.view();
  return krEqualsIgnoringCase(word, row.shortName) || NameWords::isConstant(word, name, kPrefix) ||
         krEqualsIgnoringCase(word, name.substr(kPrefix.size()));
}

}  // namespace

std::string HandleNames::shortName(KRText handleName) {
  for (const Row& row : kRows) {
    if (sameText(row.name, handleName)) return std::string(row.shortName);
  }
  return std::string(handleName.view());
}

KRString HandleNames::resolve(std::string_view word) {
  for (const Row& row : kRows) {
    if (isNameOf(row, word)) return row.name;
  }
  throw Unusable("there is no fix named \"" + std::string(word) + "\"; the fixes are: " + NameWords::list(kRows));
}
