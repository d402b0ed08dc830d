#pragma once

#include "contacts/model/KRCardRecord.h"
#include "platform/KRPrefetch.h"

/// Asks the processor for what stands in front of a record's rows: where its card is. Less than `prefetch`, for walks
/// that read cards and no rows; when it has come, `prefetchCard` asks for the card itself.
inline void krPrefetchCardPlace(const KRCardRecord& record) noexcept {
  const KRCardRow* const rows = record.rows().data();
  if (rows != nullptr) krPrefetch(reinterpret_cast<const char*>(rows) - KRCardRecord::kHeadSize);
}
