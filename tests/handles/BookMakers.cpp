// The books that need nothing but memory and files; those of the desktop's service are in tests/desktop.
#include "contacts/vcard/KRVCardReader.h"
#include "contacts/vcard/KRVCardWriter.h"
#include "tests/support/KRBookMakers.h"

namespace {

/// A book that keeps its persons as cards in one file, by nothing but the reader and the writer of cards.
class KRCardsBook : public KRAddressBook {
 public:
  explicit KRCardsBook(const KRTestFolder& folder)
      : KRAddressBook("cards"_kr, "Cards"_kr), path_(folder.at("cards.vcf")) {
    KRVCardReader::read(KRTestFolder::contentOf(path_), *this);
  }

  KRResult<void> saveNow() override {
    std::string cards;
    const KRVCardWriter writer(KRVCardVersion::V30);
    for (const IKRPerson& person : allPersons()) writer.write(person, cards);
    std::ofstream(path_, std::ios::binary) << cards;
    return {};
  }

 private:
  const std::string path_;
};

KRRef<KRAddressBook> openMemory(const KRTestFolder& /*folder*/) {
  return krMake<KRAddressBook>("memory"_kr, "Memory"_kr);
}

KRRef<KRAddressBook> openCards(const KRTestFolder& folder) {
  return krMake<KRCardsBook>(folder);
}

}  // namespace

const std::vector<KRBookMaker>& krBookMakers() {
  static const auto& makers = *[] {
    auto* all = new std::vector<KRBookMaker>{
        {"memory", [](const KRTestFolder&) {}, openMemory, false, true},
        {"cards", [](const KRTestFolder& folder) { folder.put("cards.vcf", ""); }, openCards, true, true},
    };
    for (const KRStoreKind& kind : krStoreKinds()) all->push_back(krBookMaker(kind));
    return all;
  }();
  return makers;
}
