#include "import/KRCSVEntryReader.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "contacts/model/KRObjectInstantMessage.h"
#include "import/KRCSVLabels.h"

namespace {

/// What exporters write by themselves where nobody has chosen anything.
constexpr std::string_view kDefaults[] = {"Normal",      "False",           "FALSE",        "Falsch", "Faux",
                                          "Unspecified", "Nicht angegeben", "Non spécifié", "SMTP"};

}  // namespace

void KRCSVEntryReader::read(KRTempPerson& person) {
  Made made;
  auto property = KROrdinal::Name;
  for (const Entry& entry : plan_.entries()) {
    if (entry.property != property) {
      finish(property, made, person);
      property = entry.property;
    }
    if (entry.property == KROrdinal::Address) {
      readAddress(entry, made);
    } else {
      readValues(entry, made);
    }
  }
  finish(property, made, person);
}

void KRCSVEntryReader::finish(KROrdinal property, Made& made, KRTempPerson& person) {
  if (made.values) {
    if (made.main != kNone) made.values->setMainIndex(made.main);
    person.setValue(std::move(made.values), KRProperty::propertyWithOrdinal(property));
  }
  made = {};
}

KRRef<KRLabel> KRCSVEntryReader::labelOf(const Entry& entry, size_t index) const {
  if (entry.labels == kNone || !cells_.has(entry.labels)) return entry.fixedLabel;
  const std::string_view cell = cells_.view(entry.labels);
  if (cells_.isOwn()) return krCSVSharedLabel(cell);
  std::string_view label = krCSVWithoutStar(cells_.piece(entry.labels, index));
  // One label for several values counts for all of them.
  if (label.empty()) label = krCSVWithoutStar(cells_.piece(entry.labels, 0));
  const std::string usual = krCSVUsualLabel(label);
  return usual.empty() ? entry.fixedLabel : krCSVSharedLabel(std::string_view(usual));
}

void KRCSVEntryReader::add(const Entry& entry, size_t index, KRValue value, Made& made) const {
  const int32_t type = KRProperty::propertyWithOrdinal(entry.property)->subValueType();
  if (!made.values) made.values = krMake<KRMutableMultipleValue>();
  made.values->addValue(krMake<KRMutableSingleValue>(std::move(value), labelOf(entry, index), type));
  if (cells_.has(entry.main) && made.main == kNone) made.main = made.values->count() - 1;
}

KRInstantMessageServer* KRCSVEntryReader::serverOf(const Entry& entry) const {
  const bool hasService = cells_.has(entry.service);
  const KRText service = hasService ? KRText(cells_.view(entry.service)) : entry.label.text();
  KRInstantMessageServer* server = service.isEmpty() ? nullptr
                                   : cells_.isOwn()  ? KRInstantMessageServer::serverWithName(service)
                                                     : KRInstantMessageServer::serverWithDisplayName(service);
  return server == nullptr && hasService ? KRInstantMessageServer::serverWithName(service) : server;
}

KRValue KRCSVEntryReader::dateOf(const Entry& entry, KRString text) {
  if (const std::optional<KRDate> date = dates_.read(text.view())) return *date;
  if (KRCSVDateReader::isNone(text.view())) return {};
  if (cells_.isOwn()) return text;
  remainder_.tellNoDate(text.view());
  remainder_.keep(entry.values.front(), std::move(text));
  return {};
}

KRValue KRCSVEntryReader::valueOf(const Entry& entry, KRString text) {
  switch (entry.property) {
    case KROrdinal::Phone:
      if (krCSVIsSpoiledNumber(text.view())) {
        remainder_.problems.push_back(krConcat({"a spreadsheet has spoiled the number ", text}));
      }
      return krMake<KRObjectPhone>(std::move(text));
    case KROrdinal::Email:
      return krMake<KRObjectEmail>(std::move(text));
    case KROrdinal::OtherDate:
      return dateOf(entry, std::move(text));
    case KROrdinal::InstantMessage:
      return krMake<KRObjectInstantMessage>(std::move(text), serverOf(entry));
    default:
      return text;
  }
}

void KRCSVEntryReader::readValues(const Entry& entry, Made& made) {
  for (const size_t column : entry.values) {
    const size_t count = cells_.pieceCount(column);
    for (size_t i = 0; i < count; ++i) {
      std::string_view each = count == 1 ? cells_.view(column) : cells_.piece(column, i);
      // Blanks around an address on the net or a date are never meant; around a number they are a finding.
      const bool isTrimmed = entry.property == KROrdinal::Email || entry.property == KROrdinal::URL ||
                             entry.property == KROrdinal::OtherDate || count > 1;
      if (isTrimmed && !cells_.isOwn()) each = krCSVTrimmed(each);
      if (each.empty() && !cells_.isOwn()) continue;
      if (entry.isDefault && std::find(std::begin(kDefaults), std::end(kDefaults), each) != std::end(kDefaults))
        continue;
      KRValue value = valueOf(
          entry, entry.property == KROrdinal::Other && count == 1 ? cells_.lines(column) : cells_.row().slice(each));
      if (!value.isNothing()) add(entry, i, std::move(value), made);
    }
  }
  if (cells_.has(entry.month) || cells_.has(entry.day)) {
    const std::optional<KRDate> date = KRCSVDateReader::of(
        cells_.viewOrNone(entry.year), cells_.viewOrNone(entry.month), cells_.viewOrNone(entry.day));
    if (date) add(entry, 0, *date, made);
  }
}

/// What the columns say of one field, a line each.
KRString KRCSVEntryReader::addressField(const std::vector<size_t>& columns, size_t index) const {
  KRString field;
  for (const size_t column : columns) {
    if (!cells_.has(column)) continue;
    const std::string_view each = cells_.isOwn() ? cells_.view(column) : krCSVTrimmed(cells_.piece(column, index));
    if (each.empty()) continue;
    const KRString line = cells_.isOwn() ? cells_.row().slice(each) : KRCSVCells::withBreaks(each);
    field = field.isNothing() ? line : krConcat({field, "\n", line});
  }
  return field;
}

/// An address that stands in one column: the street, unless there is one, or the text says nothing beside the fields.
void KRCSVEntryReader::readWholeAddress(const Entry& entry, size_t index, KRObjectAddress& address) const {
  const KRString& street = kKRAddressFieldNames[static_cast<size_t>(KRAddressField::Street)];
  if (entry.values.empty() || !address.stringValue(street).isNothing()) return;
  const KRString whole = addressField(entry.values, index);
  std::string told;
  for (const KRString& field : address.standardFields()) told += krCSVSpacedWords(field.view());
  if (!whole.isEmpty() && !krCSVHoldsWords(told, whole.view())) address.setStringValue(whole, street);
}

void KRCSVEntryReader::readAddress(const Entry& entry, Made& made) {
  size_t count = 0;
  for (const auto& columns : entry.fields) {
    for (const size_t column : columns) count = std::max(count, cells_.pieceCount(column));
  }
  for (const size_t column : entry.values) count = std::max(count, cells_.pieceCount(column));
  if (cells_.isOwn() && cells_.has(entry.countryCode)) count = std::max<size_t>(count, 1);
  for (size_t i = 0; i < count; ++i) {
    auto address = krMake<KRObjectAddress>();
    for (size_t field = 0; field < kKRAddressFieldCount; ++field) {
      if (!entry.fields[field].empty()) {
        address->setStringValue(addressField(entry.fields[field], i), kKRAddressFieldNames[field]);
      }
    }
    readWholeAddress(entry, i, *address);
    if (cells_.has(entry.countryCode)) address->setCountryCode(cells_.text(entry.countryCode));
    add(entry, i, address, made);
  }
}
