#include "app/BookExport.h"

#include <string_view>
#include <unordered_map>
#include <utility>

#include "app/CardConversion.h"
#include "app/Unusable.h"
#include "contacts/model/ABPerson.h"
#include "contacts/model/KRAsRecord.h"
#include "contacts/model/KRCardPrefetch.h"
#include "contacts/vcard/KRVCardGroupRewriter.h"
#include "contacts/vcard/KRVCardReader.h"
#include "contacts/vcard/KRVCardWriter.h"
#include "import/KRCSVReading.h"
#include "import/KRCSVWriter.h"
#include "platform/KRText.h"

namespace {

using Members = std::unordered_map<const KRGroup*, KRStringList>;

/// How many contacts before it is written a contact is asked for in memory, and its card: of most contacts nothing else
/// is read.
constexpr size_t kAhead = 8;
constexpr size_t kCardAhead = 4;

/// Whether the card is the contact as it stands, under the identifier that it has in the book.
bool holdsAll(const ABPerson& person) {
  return !person.card().empty() && !person.isChanged() && person.isIDOfCard() && krIsWellFormed(person.card());
}

KRVCardVersion versionOf(const ABPerson* person) {
  if (person == nullptr || person->card().empty()) return KRVCardVersion::V30;
  constexpr std::string_view kStart = "VERSION:";
  const size_t at = person->card().find(kStart);
  if (at == std::string_view::npos) return KRVCardVersion::V30;
  return krVCardVersionNamed(person->card().substr(at + kStart.size(), 3)).value_or(KRVCardVersion::V30);
}

}  // namespace

BookExport::Result BookExport::write(KRAddressBook& book, const PersonFilter& filter,
                                     std::optional<KRVCardVersion> version,
                                     const std::function<void(std::string_view)>& put,
                                     const std::function<void(const IKRPerson&, const std::string&)>& loss,
                                     const KRProgress& progress) {
  Result result;
  Members members;
  const size_t count = book.allPersonsCount();
  size_t done = 0;
  std::string card;
  const KRPersonList& persons = book.allPersons();
  for (const IKRPerson& person : persons) {
    progress(krPercent(done++, count));
    if (done + kAhead < count) krPrefetchCardPlace(*persons.at(done + kAhead));
    if (done + kCardAhead < count) persons.at(done + kCardAhead)->prefetchRest();
    if (!filter.matches(person)) continue;
    ++result.persons;
    for (const KRRef<KRGroup>& group : person.parentGroups()) members[group.get()].push_back(person.ID());
    const ABPerson* record = krAsRecord(person);
    if (!version && record != nullptr && holdsAll(*record)) {
      put(record->card());
      if (record->card().back() != '\n') put("\r\n");
      continue;
    }
    card.clear();
    KRVCardWriter(version.value_or(versionOf(record))).write(person, card, person.ID());
    put(card);
    if (!version) continue;
    const KRRef<ABPerson> read = KRVCardReader::readOne(card);
    const std::string names = read ? CardConversion::differences(person, *read) : "the whole contact";
    if (names.empty()) continue;
    ++result.losses;
    loss(person, names);
  }
  for (const KRRef<KRGroup>& group : book.rootGroups()) {
    const auto of = members.find(group.get());
    // Of a part of the contacts, groups without any of them are no part.
    if (of == members.end() && filter.isNarrow()) continue;
    const KRVCardGroup written{group->name(), group->uniqueId(), of != members.end() ? of->second : KRStringList()};
    put(KRVCardGroupRewriter::card(written, version.value_or(KRVCardVersion::V40)));
    ++result.groups;
  }
  progress(100);
  return result;
}

BookExport::Result BookExport::writeTable(KRAddressBook& book, const PersonFilter& filter, bool hasRawCells,
                                          const std::function<void(std::string_view)>& put,
                                          const KRProgress& progress) {
  KRCSVWriter::Options options;
  options.hasRawCells = hasRawCells;
  KRCSVWriter writer(options);
  Result result;
  const size_t steps = 2 * book.allPersonsCount();
  size_t done = 0;
  const auto forContacts = [&](const std::function<void(const IKRPerson&)>& each) {
    for (const IKRPerson& person : book.allPersons()) {
      progress(krPercent(done++, steps));
      if (filter.matches(person)) each(person);
    }
  };
  forContacts([&](const IKRPerson& person) { writer.measure(person); });
  std::string text;
  writer.begin(text);
  if (writer.columnCount() > KRCSVReading::kMostColumns || text.size() > KRCSVReading::kLongestHeadings) {
    throw Unusable("a contact has so many values that a delimited file would need " +
                   std::to_string(writer.columnCount()) + " columns, more than can be read back (" +
                   std::to_string(KRCSVReading::kMostColumns) +
                   "); write a .vcf file, or leave the contact out with --where or --id");
  }
  put(text);
  forContacts([&](const IKRPerson& person) {
    ++result.persons;
    text.clear();
    writer.append(person, text);
    put(text);
  });
  progress(100);
  return result;
}
