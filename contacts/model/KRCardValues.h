#pragma once

#include <cstdint>
#include <span>

#include "contacts/model/KRCardRecord.h"
#include "contacts/model/KRStoredValue.h"
#include "platform/KRValue.h"

// What the rows of a record say: as views, and as the stored values made of them.

/// Calls `visit(row, details)` for each row of a property until it answers false.
template <class Visit>
void krForRows(const KRCardRecord& record, KROrdinal property, Visit visit) {
  const KRCardRow* entry = record.find(static_cast<uint8_t>(property));
  if (entry == nullptr) return;
  const KRCardRow* end = record.rows().data() + record.rows().size();
  while (entry != end && entry->what == static_cast<uint8_t>(property)) {
    const KRCardRow* details = entry + 1;
    const KRCardRow* next = details;
    while (next != end && next->isDetail()) ++next;
    if (!visit(*entry, std::span<const KRCardRow>(details, next))) return;
    entry = next;
  }
}

/// The label's name of an entry, or nothing.
KRText krLabelOf(const KRCardRecord& record, const KRCardRow& entry);
/// The name of an account's service, or nothing.
KRText krServiceOf(const KRCardRecord& record, std::span<const KRCardRow> details);
/// The date whose text form a row holds; nothing for any other text.
KRValue krDateOf(KRText text);
/// What the record says of a property that is no picture; null when that is nothing.
KRRef<KRStoredValue> krRecordValue(const KRCardRecord& record, const KRProperty& property);
/// The multiple value of a property that has rows.
KRRef<KRStoredValue> krMultipleValue(const KRCardRecord& record, const KRProperty& property);
