#include <algorithm>
#include <iterator>

#include "handles/KRHandleAddSupport.h"
#include "handles/KRHandleDeleteContact.h"
#include "handles/KRHandleDeleteDublicateProprty.h"
#include "handles/KRHandleDeleteDuplicateContacts.h"
#include "handles/KRHandleDeleteProperty.h"
#include "handles/KRHandleRemoveSpace.h"
#include "handles/KRHandleUseDefaultString.h"
#include "handles/KRIssueHandle.h"

namespace {

template <class Handle>
KRRef<KRIssueHandle> make() {
  return krMake<Handle>();
}

struct Row {
  KRString name;
  KRRef<KRIssueHandle> (*make)();
};

// The class of each name that has one of its own; any other name is a plain handle.
constexpr Row kRows[] = {
    {KRHandleNameDeleteDuplicatePerson, make<KRHandleDeleteDuplicateContacts>},
    {KRHandleNameDeleteDublicatProperty, make<KRHandleDeleteDublicateProprty>},
    {KRHandleNameDeleteProperty, make<KRHandleDeleteProperty>},
    {KRHandleNameAddSupport, make<KRHandleAddSupport>},
    {KRHandleNameDeleteContact, make<KRHandleDeleteContact>},
    {KRHandleNameRemoveSpace, make<KRHandleRemoveSpace>},
    {KRHandleNameUseDefaultString, make<KRHandleUseDefaultString>},
    {KRHandleNameEdit, make<KRIssueHandle>},
    {KRHandleNameMergeContact, make<KRIssueHandle>},
    {KRHandleNameIgnore, make<KRIssueHandle>},
};

}  // namespace

KRRef<KRIssueHandle> KRIssueHandle::issueHandleWithName(const KRString& name, KRValue info) {
  const Row* row =
      std::find_if(std::begin(kRows), std::end(kRows), [&](const Row& each) { return sameText(each.name, name); });
  KRRef<KRIssueHandle> handle = row == std::end(kRows) ? krMake<KRIssueHandle>() : row->make();
  handle->setInfo(std::move(info));
  handle->name_ = name;
  return handle;
}
