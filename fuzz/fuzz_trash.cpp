// Any bytes as the file of the trash: persons that are read from it are put back, trashed again, archived and read
// again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "contacts/KRTrashAddressBook.h"
#include "platform/KRKeyedArchiver.h"

namespace {

std::string archiveOf(const std::vector<KRRef<KRTempPerson>>& persons) {
  const auto list = krMake<KRValueList>();
  for (const KRRef<KRTempPerson>& person : persons) list->values().emplace_back(person);
  return KRKeyedArchiver::archivedData(list);
}

/// A trash without a file.
KRTrashAddressBook& trash() {
  static auto* const only = [] {
    setenv("KRCONTACTS_HOME", "/dev/null/none", 1);
    return krMake<KRTrashAddressBook>().detach();
  }();
  return *only;
}

bool sameValues(const IKRPerson& a, const IKRPerson& b) {
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    if (!krEqualObjects(a.valueByProperty(property).get(), b.valueByProperty(property).get())) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto persons = KRTrashAddressBook::personsIn({reinterpret_cast<const char*>(data), size});
  if (!persons) return 0;
  // The same person may stand in the list many times; once is enough here.
  constexpr size_t kEnough = 50;
  std::vector<KRRef<KRTempPerson>> again;
  for (const KRRef<KRTempPerson>& person : *persons) {
    if (again.size() == kEnough) break;
    const KRRef<ABPerson> restored = KRTrashAddressBook::restoredPerson(person.get());
    if (!restored || !sameValues(*restored, *person)) std::abort();
    if (!person->ID().isEmpty() && !(restored->ID() == person->ID())) std::abort();
    again.push_back(trash().trashPersonWithPerson(restored.get()));
    if (!sameValues(*again.back(), *person)) std::abort();
  }
  const std::string archive = archiveOf(again);
  const auto third = KRTrashAddressBook::personsIn(archive);
  // What may be held grows with the file, so a smaller archive may hold less.
  if (!third && archive.size() >= size) std::abort();
  if (third && third->size() != again.size()) std::abort();
  return 0;
}
