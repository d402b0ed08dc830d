#include "import/KRCSVPersonMaker.h"

#include <optional>
#include <string>
#include <utility>

#include "contacts/vcard/KRVCardText.h"

KRCSVPersonMaker::KRCSVPersonMaker(const KRCSVMapping& mapping, const KRCSVDialect& dialect, KRCSVCells::Signs signs)
    : plan_(mapping),
      cells_(mapping.isOwn(), mapping.isOwn() && !mapping.isOwnRaw() && !dialect.hasRawCells, signs),
      names_(dialect.isLastNameFirst),
      entries_(plan_, cells_, dates_, remainder_),
      fedCount_(plan_.fedCount()) {
  dates_.setDayFirst(dialect.isDayFirst);
  for (const KRCSVColumn& column : mapping.columns()) {
    headingLabels_.push_back(krCSVSharedLabel(column.heading));
    isTagList_.push_back(!mapping.isOwn() || column.heading == "Labels"_kr);
  }
}

void KRCSVPersonMaker::learn(const KRCSVRow& row) {
  cells_.look(row);
  for (const size_t column : plan_.dateColumns()) dates_.learn(cells_.view(column));
}

KRRef<KRTempPerson> KRCSVPersonMaker::person(const KRCSVRow& row) {
  cells_.look(row);
  remainder_.clear();
  if (row.isBlank() && !cells_.isOwn()) return {};
  auto person = krMake<KRTempPerson>();
  person->reserveValues(fedCount_);
  for (const KRCSVPlan::Single& single : plan_.singles()) readSingle(single, *person);
  readBirthday(*person);
  if (!plan_.tags().empty()) readTags(*person);
  names_.read(plan_.name(), cells_, singles_, *person, remainder_);
  for (size_t column = headingLabels_.size(); column < row.count(); ++column) remainder_.keepCell(cells_, column);
  entries_.read(*person);
  if (!remainder_.kept.empty()) setRemainder(*person);
  return person;
}

void KRCSVPersonMaker::readSingle(const KRCSVPlan::Single& single, KRTempPerson& person) {
  const KROrdinal property = single.property->ordinal();
  KRString value;
  for (const size_t column : single.columns) {
    if (!cells_.has(column)) continue;
    const KRString next = property == KROrdinal::Note ? cells_.lines(column) : cells_.text(column);
    if (value.isNothing()) {
      value = next;
    } else if (value != next) {
      remainder_.keep(column, next);
    }
  }
  if (value.isNothing()) return;
  if (property != KROrdinal::Thumbnail) {
    singles_.set(person, property, value);
  } else if (std::string bytes = krDecodeBase64(value.view()); !bytes.empty()) {
    singles_.set(person, property, krMake<KRData>(std::move(bytes)));
  } else {
    remainder_.problems.push_back("the picture is not in base64"_kr);
  }
}

void KRCSVPersonMaker::readBirthday(KRTempPerson& person) {
  std::optional<KRDate> date;
  for (const size_t column : plan_.birthdays()) {
    if (!cells_.has(column)) continue;
    const std::string_view cell = cells_.view(column);
    const std::optional<KRDate> read = dates_.read(cell);
    if (read && !date) {
      date = read;
    } else if (!read && cells_.isOwn()) {
      singles_.set(person, KROrdinal::Birthday, cells_.text(column));
    } else if (!read && !KRCSVDateReader::isNone(cell)) {
      remainder_.tellNoDate(cell);
      remainder_.keep(column, cells_.text(column));
    } else if (read && !(*read == *date)) {
      remainder_.keep(column, cells_.text(column));
    }
  }
  if (date) {
    singles_.set(person, KROrdinal::Birthday, *date);
  } else {
    readBirthdayParts(person);
  }
}

void KRCSVPersonMaker::readBirthdayParts(KRTempPerson& person) {
  const auto& [year, month, day] = plan_.birthdayParts();
  if (!cells_.has(month) && !cells_.has(day) && !cells_.has(year)) return;
  const std::string_view yearCell = cells_.viewOrNone(year);
  const std::string_view monthCell = cells_.viewOrNone(month);
  const std::string_view dayCell = cells_.viewOrNone(day);
  if (const std::optional<KRDate> date = KRCSVDateReader::of(yearCell, monthCell, dayCell)) {
    singles_.set(person, KROrdinal::Birthday, *date);
    return;
  }
  remainder_.tellNoDate(krConcat({yearCell, "-", monthCell, "-", dayCell}).view());
  for (const size_t column : {year, month, day}) remainder_.keepCell(cells_, column);
}

void KRCSVPersonMaker::readTags(KRTempPerson& person) {
  auto list = krMake<KRValueList>();
  for (const size_t column : plan_.tags()) {
    if (cells_.has(column)) addTags(column, *list);
  }
  if (!list->values().empty()) singles_.set(person, KROrdinal::Tags, list);
}

void KRCSVPersonMaker::addTags(size_t column, KRValueList& tags) const {
  std::string_view rest = cells_.view(column);
  if (!isTagList_[column]) {
    tags.values().emplace_back(cells_.row().slice(rest));
    return;
  }
  const bool isTripled = rest.find(":::") != std::string_view::npos;
  const std::string_view separator = cells_.isOwn() || isTripled                ? ":::"
                                     : rest.find(';') != std::string_view::npos ? ";"
                                                                                : ",";
  while (true) {
    const size_t end = rest.find(separator);
    const std::string_view whole = rest.substr(0, end);
    const std::string_view tag = cells_.isOwn() ? krCSVTrimmed(whole) : krCSVWithoutStar(whole);
    if (!tag.empty()) tags.values().emplace_back(cells_.row().slice(tag));
    if (end == std::string_view::npos) return;
    rest.remove_prefix(end + separator.size());
  }
}

/// What fits nowhere goes behind the values that columns feed under the same property.
void KRCSVPersonMaker::setRemainder(KRTempPerson& person) {
  KRRef<KRMutableMultipleValue> values(
      dynamic_cast<KRMutableMultipleValue*>(person.valueByPropertyName(KRProPertyOther).get()));
  if (!values) values = krMake<KRMutableMultipleValue>();
  for (auto& [column, text] : remainder_.kept) {
    const bool hasHeading = column < headingLabels_.size();
    values->addValue(krMake<KRMutableSingleValue>(
        std::move(text),
        hasHeading ? headingLabels_[column] : krMake<KRLabel>(KRString("Column " + std::to_string(column + 1))),
        KRValueType::Text));
  }
  person.setValue(std::move(values), KRProperty::propertyWithOrdinal(KROrdinal::Other));
}
