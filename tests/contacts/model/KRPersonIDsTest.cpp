#include "contacts/model/KRPersonIDs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <string>

#include "contacts/model/ABPerson.h"
#include "contacts/model/KRAddressBook.h"
#include "contacts/vcard/KRVCardReader.h"

namespace {

/// A card of one of few texts, some of them with an identifier of their own; "a-2" may be taken before a second "a" is.
KRRef<ABPerson> randomPerson(std::mt19937& random) {
  const auto below = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
  std::string card = "BEGIN:VCARD\nVERSION:3.0\nN:;" + std::to_string(below(40)) + ";;;\n";
  if (below(3) == 0) card += "UID:a" + std::string(below(2) == 0 ? "" : "-" + std::to_string(1 + below(9))) + "\n";
  KRRef<ABPerson> person = KRVCardReader::readOne(card + "END:VCARD\n");
  if (below(20) == 0) person->setID(KRString("a-" + std::to_string(below(9))));
  return person;
}

TEST(KRPersonIDs, AreGivenByOrderOfAppearanceHoweverManyThereAre) {
  for (unsigned round = 0; round < 20; ++round) {
    std::mt19937 random(round);
    const auto book = krMake<KRAddressBook>("book"_kr, "Book"_kr);
    std::set<std::string> used;
    std::map<std::string, unsigned> last;
    // Twice, as persons that come later find a table that is filled in part.
    for (int part = 0; part < 2; ++part) {
      const size_t first = book->allPersonsCount();
      for (unsigned i = 0; i < (round % 2 == 0 ? 63U : 250U) + round * 7; ++i)
        book->addPerson(randomPerson(random).get());
      for (size_t i = first; i < book->allPersonsCount(); ++i) {
        const auto& person = dynamic_cast<const ABPerson&>(*book->allPersons().at(i));
        const std::string base(person.baseID().view());
        std::string expected = base;
        while (!used.insert(expected).second) {
          unsigned& number = last[base];
          number = std::max(number + 1, 2U);
          expected = base + "-" + std::to_string(number);
        }
        ASSERT_EQ(person.ID().view(), expected) << round << " " << i;
      }
    }
  }
}

}  // namespace
