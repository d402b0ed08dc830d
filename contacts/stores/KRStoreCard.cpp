#include "contacts/stores/KRStoreCard.h"

#include "contacts/vcard/KRVCardReader.h"
#include "contacts/vcard/KRVCardRewriter.h"
#include "contacts/vcard/KRVCardWriter.h"

KRStoreCard::KRStoreCard(const ABPerson& person) {
  const bool canStandAlone = !person.card().empty() && krIsWellFormed(person.card());
  if (canStandAlone && !person.isChanged()) {
    record_ = person.record();
    ID_ = person.givenID();
  } else {
    ID_ = person.baseID();
    const std::string card =
        canStandAlone ? KRVCardRewriter::rewritten(person) : KRVCardWriter(KRVCardVersion::V40).card(person, ID_);
    if (const KRRef<ABPerson> written = KRVCardReader::readOne(card)) record_ = written->record();
  }
  if (const KRCardRow* UID = record_.find(KRCardPart::UID); UID != nullptr && record_.view(*UID) == ID_) ID_ = {};
}
