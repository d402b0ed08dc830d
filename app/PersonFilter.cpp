#include "app/PersonFilter.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <unordered_set>

#include "app/Unusable.h"
#include "platform/KRCaseFolding.h"

namespace {

/// Looks for one text in the values of contacts.
class TextSearch {
 public:
  explicit TextSearch(const std::string& text) : sought_(krCaselessKey(KRString(text))) {}

  bool isIn(const IKRPerson& person) const {
    KRHold hold;
    if (isIn(person.showName()) || isIn(person.displayName())) return true;
    const KRNameView name = person.readName(hold);
    if (isIn(name.first) || isIn(name.middle) || isIn(name.last)) return true;
    const std::vector<const KRProperty*>& properties = KRProperty::StandardPropertyArray();
    return std::any_of(properties.begin(), properties.end(), [&](const KRProperty* property) {
      return isMeantForPeople(property->ordinal()) && isIn(person, property->ordinal(), hold);
    });
  }

 private:
  /// Whether the text of the property is something that is shown, and not a mark ("YES").
  static bool isMeantForPeople(KROrdinal property) { return property != KROrdinal::IsOrganization; }

  bool isIn(KRText text) const {
    return !text.isNothing() && krCaselessKey(text).view().find(sought_.view()) != std::string_view::npos;
  }

  bool isIn(const IKRPerson& person, KROrdinal property, KRHold& hold) const {
    if (isIn(person.readText(property, hold))) return true;
    bool isFound = false;
    person.readEntries(property, hold, [&](const KREntryView& entry) {
      isFound = isIn(entry.text) || isIn(entry.server) || (entry.address != nullptr && isIn(*entry.address));
      return !isFound;
    });
    return isFound;
  }

  bool isIn(const KRAddressView& address) const {
    if (std::any_of(address.fields.begin(), address.fields.end(), [&](KRText field) { return isIn(field); }))
      return true;
    if (address.further == nullptr) return false;
    return std::any_of(address.further->begin(), address.further->end(),
                       [&](const KRObjectAddress::Field& field) { return isIn(field.value); });
  }

  KRString sought_;
};

}  // namespace

void PersonFilter::addTo(CLI::App& words) {
  words.add_option("--where", texts_)->allow_extra_args(false);
  words.add_option("--id", IDs_)->allow_extra_args(false);
}

bool PersonFilter::matches(const IKRPerson& person) const {
  if (!IDs_.empty()) {
    const KRString ID = person.ID();
    if (std::none_of(IDs_.begin(), IDs_.end(), [&](const std::string& each) { return ID == KRText(each.c_str()); })) {
      return false;
    }
  }
  return std::all_of(texts_.begin(), texts_.end(),
                     [&](const std::string& text) { return TextSearch(text).isIn(person); });
}

void PersonFilter::check(KRAddressBook& book) const {
  if (IDs_.empty()) return;
  std::unordered_set<std::string> missing(IDs_.begin(), IDs_.end());
  for (const IKRPerson& person : book.allPersons()) {
    missing.erase(std::string(person.ID().view()));
    if (missing.empty()) return;
  }
  const auto first =
      std::find_if(IDs_.begin(), IDs_.end(), [&](const std::string& ID) { return missing.count(ID) != 0; });
  throw Unusable("no contact of " + std::string(book.name().view()) + " has the ID \"" + *first + "\"");
}
