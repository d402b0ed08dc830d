#include "app/CardConversion.h"

#include "app/PersonText.h"
#include "contacts/model/KRPersonIDs.h"
#include "contacts/vcard/KRVCardGroupRewriter.h"
#include "contacts/vcard/KRVCardReader.h"
#include "contacts/vcard/KRVCardWriter.h"

namespace {

/// A contact of the same values; where a card says all of them, another one, so that what is asked of it leaves nothing
/// behind in the book.
KRRef<const IKRPerson> forReading(const IKRPerson& person) {
  const auto* record = dynamic_cast<const ABPerson*>(&person);
  if (record == nullptr || record->isChanged() || record->card().empty()) return KRRef<const IKRPerson>(&person);
  return krMake<ABPerson>(record->record());
}

}  // namespace

std::string CardConversion::differences(const IKRPerson& person, const IKRPerson& written) {
  const KRRef<const IKRPerson> original = forReading(person);
  std::string names;
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    const KRRef<KRStoredValue> before = original->valueByPropertyName(property->name());
    const KRRef<KRStoredValue> after = written.valueByPropertyName(property->name());
    if (krEqualObjects(before.get(), after.get())) continue;
    names += (names.empty() ? "" : ", ") + std::string(property->displayName().view());
  }
  return names;
}

std::string CardConversion::converted(KRVCardBook& book, KRVCardVersion version) {
  const KRVCardWriter writer(version);
  std::string text;
  for (const IKRPerson& person : book.allPersons()) {
    const bool isRecord = dynamic_cast<const ABPerson*>(&person) != nullptr;
    writer.write(person, text, isRecord ? KRString() : KRPersonIDs::newIdentifier());
  }
  for (const KRRef<ABPerson>& group : book.groupCards()) text += KRVCardGroupRewriter::card(*group, version);
  return text;
}

std::vector<CardConversion::Loss> CardConversion::losses(KRVCardBook& book, std::string_view written) {
  std::vector<Loss> found;
  auto person = book.allPersons().begin();
  const auto end = book.allPersons().end();
  KRVCardReader reader([&](const KRRef<ABPerson>& read) {
    if (!(person != end)) return;
    std::string names = differences(*person, *read);
    if (!names.empty()) found.push_back({personText(*person), std::move(names)});
    ++person;
  });
  reader.read(written);
  for (; person != end; ++person) found.push_back({personText(*person), "the whole contact"});
  return found;
}
