#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "contacts/model/ABPerson.h"
#include "contacts/model/KRAddressBook.h"
#include "contacts/vcard/KRVCardReadAhead.h"
#include "contacts/vcard/KRVCardReader.h"

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

/// Reads everything of a person both ways: what stands in the card, and the values made of it.
void readAll(const ABPerson& person) {
  KRHold hold;
  size_t entries = 0;
  const auto visit = [&](const KREntryView& entry) {
    require(krIsWellFormed(entry.text.view()) && krIsWellFormed(entry.label.view()));
    ++entries;
    return true;
  };
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    const KROrdinal ordinal = property->ordinal();
    require(krIsWellFormed(person.readText(ordinal, hold).view()));
    entries = 0;
    person.readEntries(ordinal, hold, visit);
    require(entries == person.entryCount(ordinal));
    const size_t before = entries;
    static_cast<void>(person.valueByProperty(property));
    require(person.entryCount(ordinal) == before);
  }
  static_cast<void>(person.showName());
  static_cast<void>(person.imageData());
  require(!person.ID().isEmpty());
}

/// What a reader tells of the bytes that it gets in small pieces: the cards, and what was passed over.
std::string told(std::string_view bytes, bool isAhead) {
  constexpr std::size_t kPiece = 512;
  std::string text;
  const auto tell = [&](const KRRef<ABPerson>& person) {
    text.append(person->card()).append(std::to_string(person->record().rows().size()));
    for (const KRCardRow& row : person->record().rows()) text.append(person->record().view(row).view());
  };
  KRVCardReader reader(
      tell, [&](const KRVCardNote& note) { text += std::to_string(note.line) + ":" + std::to_string(note.card); },
      kPiece);
  reader.setGroups(tell);
  KRVCardReadAhead ahead(reader, isAhead ? 2 : 1);
  while (true) {
    const std::string_view piece = bytes.substr(0, kPiece);
    std::copy(piece.begin(), piece.end(), ahead.room().begin());
    ahead.feedRoom(piece.size());
    bytes.remove_prefix(piece.size());
    if (piece.size() < kPiece) break;
  }
  ahead.finish();
  return text + reader.legacyCharset();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto book = krMake<KRAddressBook>("fuzz"_kr, "fuzz"_kr);
  KRVCardReader whole([&](KRRef<ABPerson> person) { book->addPerson(person.get()); });
  whole.read(bytes);
  for (const IKRPerson& person : book->allPersons()) readAll(static_cast<const ABPerson&>(person));

  require(told(bytes, false) == told(bytes, true));

  // In pieces it must be the same persons; the first piece alone may look like another encoding than the whole.
  size_t persons = 0;
  KRVCardReader reader([&](KRRef<ABPerson>) { ++persons; }, {}, 16);
  for (size_t at = 0; at < bytes.size(); at += 16) reader.feed(bytes.substr(at, 16));
  reader.finish();
  const auto isNarrow = [](const KRVCardReader& each) {
    return each.encoding() == KRTextEncoding::Utf8 || each.encoding() == KRTextEncoding::Other;
  };
  if (isNarrow(whole) && isNarrow(reader)) require(persons == book->allPersonsCount());
  static_cast<void>(ABPerson::initWithVCardRepresentation(KRText(std::string_view(krWellFormed(bytes)))));
  return 0;
}
