#include "contacts/KRContactsArchive.h"

#include <vector>

#include "contacts/KRTempPerson.h"
#include "contacts/KRTrashPerson.h"
#include "contacts/model/KRModelArchive.h"

std::span<const KRArchiveClass> krContactsArchiveClasses() {
  static const auto* const classes = [] {
    const auto model = krModelArchiveClasses();
    auto* all = new std::vector<KRArchiveClass>(model.begin(), model.end());
    all->push_back({"KRTempPerson", KRTempPerson::decode});
    all->push_back({"KRTrashPerson", KRTrashPerson::decode});
    return all;
  }();
  return *classes;
}
