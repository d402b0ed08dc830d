#include "contacts/model/KRCardValues.h"

#include <optional>
#include <utility>

#include "contacts/model/IKRPerson.h"
#include "contacts/model/KRLabelTable.h"
#include "contacts/model/KRMutableMultipleValue.h"
#include "contacts/model/KRObjectAddress.h"
#include "contacts/model/KRObjectEmail.h"
#include "contacts/model/KRObjectInstantMessage.h"
#include "contacts/model/KRObjectPersonName.h"
#include "contacts/model/KRObjectPhone.h"

namespace {

/// The number made of `count` digits from `at` on.
int number(std::string_view text, size_t at, size_t count) noexcept {
  int result = 0;
  for (size_t i = at; i < at + count; ++i) result = result * 10 + (text[i] - '0');
  return result;
}

KRRef<KRLabel> labelObject(const KRCardRecord& record, const KRCardRow& entry) {
  if (entry.label != 0) return KRLabelTable::label(entry.label);
  const KRText name = krLabelOf(record, entry);
  return name.isNothing() ? KRRef<KRLabel>() : krMake<KRLabel>(KRString(name));
}

KRRef<KRObjectAddress> addressObject(const KRCardRecord& record, std::span<const KRCardRow> details) {
  auto address = krMake<KRObjectAddress>();
  for (const KRCardRow& detail : details) {
    if (detail.what == static_cast<uint8_t>(KRCardPart::AddressCountryCode)) {
      address->setCountryCode(record.text(detail));
    } else if (detail.what == static_cast<uint8_t>(KRCardPart::AddressField)) {
      address->setStringValue(record.text(detail), kKRAddressFieldNames[detail.detail]);
    }
  }
  return address;
}

/// Null when the record has no part of a name.
KRRef<KRObjectPersonName> nameObject(const KRCardRecord& record) {
  const auto part = [&](KRCardPart what) {
    const KRCardRow* place = record.find(what);
    return place == nullptr ? KRString() : record.text(*place);
  };
  const bool hasName =
      record.has(KRCardPart::FirstName) || record.has(KRCardPart::MiddleName) || record.has(KRCardPart::LastName);
  if (!hasName) return {};
  return krMake<KRObjectPersonName>(part(KRCardPart::FirstName), part(KRCardPart::MiddleName),
                                    part(KRCardPart::LastName));
}

KRValue entryValue(const KRCardRecord& record, int32_t type, const KRCardRow& entry,
                   std::span<const KRCardRow> details) {
  switch (type) {
    case KRValueType::Phone:
      return krMake<KRObjectPhone>(record.text(entry));
    case KRValueType::Email:
      return krMake<KRObjectEmail>(record.text(entry));
    case KRValueType::Address:
      return addressObject(record, details);
    case KRValueType::InstantMessage:
      return krMake<KRObjectInstantMessage>(record.text(entry),
                                            KRInstantMessageServer::serverWithName(krServiceOf(record, details)));
    case KRValueType::Date:
      return krDateOf(record.view(entry));
    default:
      return record.text(entry);
  }
}

}  // namespace

KRText krLabelOf(const KRCardRecord& record, const KRCardRow& entry) {
  if (entry.label != 0) return KRLabelTable::name(entry.label);
  const KRCardRow* end = record.rows().data() + record.rows().size();
  for (const KRCardRow* detail = &entry + 1; detail != end && detail->isDetail(); ++detail) {
    if (detail->what == static_cast<uint8_t>(KRCardPart::LabelText)) return record.view(*detail);
  }
  return {};
}

KRText krServiceOf(const KRCardRecord& record, std::span<const KRCardRow> details) {
  for (const KRCardRow& detail : details) {
    if (detail.what != static_cast<uint8_t>(KRCardPart::AccountService)) continue;
    return detail.label != 0 ? KRLabelTable::name(detail.label) : record.view(detail);
  }
  return {};
}

KRValue krDateOf(KRText text) {
  const std::string_view form = text.view();
  constexpr size_t kWithYear = 10;
  constexpr size_t kWithoutYear = 7;
  if (form.size() != kWithYear && form.size() != kWithoutYear) return {};
  std::optional<int> year;
  if (form.size() == kWithYear) year = number(form, 0, 4);
  const std::optional<KRDate> date =
      KRDate::make(year, number(form, form.size() - 5, 2), number(form, form.size() - 2, 2));
  return date ? KRValue(*date) : KRValue();
}

KRRef<KRStoredValue> krMultipleValue(const KRCardRecord& record, const KRProperty& property) {
  auto multiple = krMake<KRMutableMultipleValue>();
  krForRows(record, property.ordinal(), [&](const KRCardRow& entry, std::span<const KRCardRow> details) {
    KRValue value = entryValue(record, property.subValueType(), entry, details);
    multiple->addValue(
        krMake<KRMutableSingleValue>(std::move(value), labelObject(record, entry), property.subValueType()));
    if ((entry.detail & KRCardRow::kMain) != 0) multiple->setMainIndex(multiple->count() - 1);
    return true;
  });
  return multiple;
}

KRRef<KRStoredValue> krRecordValue(const KRCardRecord& record, const KRProperty& property) {
  const auto single = [&](KRValue value) -> KRRef<KRStoredValue> { return krSingleValue(std::move(value), property); };
  if (property.valueType() == KRValueType::PersonName) {
    const KRRef<KRObjectPersonName> name = nameObject(record);
    return name ? single(name) : KRRef<KRStoredValue>();
  }
  const KRCardRow* place = record.find(static_cast<uint8_t>(property.ordinal()));
  if (place == nullptr) return {};
  switch (property.valueType()) {
    case KRValueType::Multiple:
      return krMultipleValue(record, property);
    case KRValueType::Date:
      return single(krDateOf(record.view(*place)));
    case KRValueType::TextList: {
      KRStringList texts;
      krForRows(record, property.ordinal(), [&](const KRCardRow& entry, std::span<const KRCardRow>) {
        texts.push_back(record.text(entry));
        return true;
      });
      return single(KRValueList::ofTexts(texts));
    }
    default:
      return single(record.text(*place));
  }
}
