#pragma once

#include "contacts/model/KRAsRecord.h"
#include "platform/KRPrefetch.h"

/// Asks the processor for what stands in front of a record's rows: where its card is. Less than `prefetch`, for walks
/// that read cards and no rows; when it has come, `prefetchRest` asks for the card itself. Persons that are no records
/// ask for nothing.
inline void krPrefetchCardPlace(const IKRPerson& person) {
  const ABPerson* record = krAsRecord(person);
  const KRCardRow* const rows = record == nullptr ? nullptr : record->record().rows().data();
  if (rows != nullptr) krPrefetch(reinterpret_cast<const char*>(rows) - KRCardRecord::kHeadSize);
}
