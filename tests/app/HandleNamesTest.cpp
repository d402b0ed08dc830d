#include "app/HandleNames.h"

#include <gtest/gtest.h>

#include <set>

#include "app/Unusable.h"
#include "handles/KRHandleNames.h"

namespace {

struct Row {
  KRString name;
  const char* shortName;
};
const Row kRows[] = {
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

TEST(HandleNames, EachHandleHasAShortNameOfItsOwn) {
  std::set<std::string> names;
  for (const Row& row : kRows) {
    EXPECT_EQ(HandleNames::shortName(row.name), row.shortName);
    names.insert(row.shortName);
  }
  EXPECT_EQ(names.size(), std::size(kRows));
}

TEST(HandleNames, AHandleThatIsNotKnownIsCalledByItsOwnName) {
  EXPECT_EQ(HandleNames::shortName("Mend"), "Mend");
}

TEST(HandleNames, AWordIsAShortNameTheConstantOrTheConstantWithoutItsStart) {
  for (const Row& row : kRows) {
    const std::string constant(row.name.view());
    EXPECT_EQ(HandleNames::resolve(row.shortName), row.name);
    EXPECT_EQ(HandleNames::resolve(constant), row.name);
    EXPECT_EQ(HandleNames::resolve(constant.substr(12)), row.name);
  }
  EXPECT_EQ(HandleNames::resolve("DeleteDublicatProperty"), KRHandleNameDeleteDublicatProperty);
  EXPECT_EQ(HandleNames::resolve("REMOVE-space"), KRHandleNameRemoveSpace);
  EXPECT_EQ(HandleNames::resolve("merge-contact"), KRHandleNameMergeContact);
  EXPECT_EQ(HandleNames::resolve("delete-dublicat-property"), KRHandleNameDeleteDublicatProperty);
}

TEST(HandleNames, AnyOtherWordIsRefusedWithTheNamesThereAre) {
  for (const char* word : {"", "mend", "KRHandleName", "remove space"}) {
    try {
      static_cast<void>(HandleNames::resolve(word));
      ADD_FAILURE() << word;
    } catch (const Unusable& unusable) {
      const std::string line = unusable.what();
      EXPECT_NE(line.find('"' + std::string(word) + '"'), std::string::npos) << line;
      for (const Row& row : kRows) EXPECT_NE(line.find(row.shortName), std::string::npos) << line;
    }
  }
}

}  // namespace
