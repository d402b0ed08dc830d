#include "app/EqualPersons.h"

#include <algorithm>

#include "detectors/KRPersonKey.h"

EqualPersons::EqualPersons(KRAddressBook& book) {
  for (const IKRPerson& person : book.allPersons()) add(person);
}

bool EqualPersons::has(const IKRPerson& person) {
  const auto equal = known_.find(contentOf(person));
  return equal != known_.end() &&
         std::find(equal->second.begin(), equal->second.end(), person.ID()) != equal->second.end();
}

bool EqualPersons::hasEqual(const IKRPerson& person) {
  return known_.count(contentOf(person)) != 0;
}

void EqualPersons::add(const IKRPerson& person) {
  known_[contentOf(person)].push_back(person.ID());
}

std::string EqualPersons::contentOf(const IKRPerson& person) {
  std::string content;
  hold_.empty();
  const KRRef<KRData> image = person.imageData();
  krAppendPersonKey(content, person, image ? KRText(image->bytes()) : KRText(), hold_);
  return content;
}
