#include "import/KRCSVPlan.h"

#include <algorithm>

#include "import/KRCSVLabels.h"

namespace {

using Part = KRCSVTarget::Part;

bool isPartOfAddress(Part part) {
  return part >= Part::PostOfficeBox && part <= Part::CountryCode;
}

bool isPartOfDate(Part part) {
  return part == Part::Year || part == Part::Month || part == Part::Day;
}

}  // namespace

KRCSVPlan::KRCSVPlan(const KRCSVMapping& mapping) {
  for (size_t i = 0; i < mapping.columns().size(); ++i) {
    const KRCSVColumn& column = mapping.columns()[i];
    if (column.target.isIgnored()) continue;
    const KRProperty* property = KRProperty::propertyWithOrdinal(column.target.property);
    if (column.target.property == KROrdinal::Name) {
      planName(column, i);
    } else if (property->isMultiple()) {
      planEntry(column, i);
    } else {
      planSingle(column, i);
    }
  }
  std::stable_sort(entries_.begin(), entries_.end(),
                   [](const Entry& a, const Entry& b) { return a.property < b.property; });
  std::stable_sort(singles_.begin(), singles_.end(),
                   [](const Single& a, const Single& b) { return a.property->ordinal() < b.property->ordinal(); });
}

size_t KRCSVPlan::fedCount() const noexcept {
  // Name, birthday, tags, and what fits nowhere.
  size_t count = singles_.size() + 4;
  for (size_t i = 0; i < entries_.size(); ++i) {
    count += i == 0 || entries_[i].property != entries_[i - 1].property ? 1 : 0;
  }
  return count;
}

void KRCSVPlan::planName(const KRCSVColumn& column, size_t index) {
  switch (column.target.part) {
    case Part::First:
      name_.first.push_back(index);
      break;
    case Part::Middle:
      name_.middle.push_back(index);
      break;
    case Part::Last:
      name_.last.push_back(index);
      break;
    default:
      name_.whole.push_back(index);
      break;
  }
}

void KRCSVPlan::planSingle(const KRCSVColumn& column, size_t index) {
  if (column.target.property == KROrdinal::Tags) {
    tags_.push_back(index);
    return;
  }
  if (column.target.property == KROrdinal::Birthday) {
    planBirthday(column, index);
    return;
  }
  const KRProperty* property = KRProperty::propertyWithOrdinal(column.target.property);
  const auto found =
      std::find_if(singles_.begin(), singles_.end(), [&](const Single& each) { return each.property == property; });
  if (found != singles_.end()) {
    found->columns.push_back(index);
  } else {
    singles_.push_back({property, {index}});
  }
}

void KRCSVPlan::planBirthday(const KRCSVColumn& column, size_t index) {
  if (isPartOfDate(column.target.part)) {
    birthdayParts_[static_cast<size_t>(column.target.part) - static_cast<size_t>(Part::Year)] = index;
  } else {
    birthdays_.push_back(index);
    dateColumns_.push_back(index);
  }
}

/// The entry that the column belongs to: of the same property, number and label; columns without a number are values of
/// their own, except the parts of addresses and dates.
KRCSVPlan::Entry& KRCSVPlan::entryFor(const KRCSVColumn& column) {
  const Part part = column.target.part;
  const bool isPart = isPartOfAddress(part) || isPartOfDate(part) || column.target.property == KROrdinal::Address;
  const bool isBeside = part == Part::Label || part == Part::Service || part == Part::Main;
  const auto belongs = [&](const Entry& each) {
    if (each.property != column.target.property || each.number != column.number) return false;
    if (isBeside) return true;
    if (column.number == 0 && !isPart) return each.values.empty() && each.labels != kNone;
    return (each.label == column.label || each.label.isNothing() || column.label.isNothing()) &&
           (isPart || each.values.empty());
  };
  const auto found = std::find_if(entries_.rbegin(), entries_.rend(), belongs);
  if (found != entries_.rend()) return *found;
  entries_.push_back(
      {column.target.property, column.number, {}, {}, {}, kNone, kNone, kNone, {}, kNone, kNone, kNone, kNone, false});
  return entries_.back();
}

void KRCSVPlan::planEntry(const KRCSVColumn& column, size_t index) {
  Entry& entry = entryFor(column);
  if (entry.label.isNothing() && !column.label.isNothing()) {
    entry.label = column.label;
    entry.fixedLabel = krCSVSharedLabel(column.label);
  }
  const Part part = column.target.part;
  if (part == Part::Label) {
    entry.labels = index;
  } else if (part == Part::Service) {
    entry.service = index;
  } else if (part == Part::Main) {
    entry.main = index;
  } else if (part == Part::CountryCode) {
    entry.countryCode = index;
  } else if (isPartOfAddress(part)) {
    entry.fields[static_cast<size_t>(part) - static_cast<size_t>(Part::PostOfficeBox)].push_back(index);
  } else if (isPartOfDate(part)) {
    (part == Part::Year ? entry.year : part == Part::Month ? entry.month : entry.day) = index;
  } else {
    entry.values.push_back(index);
    entry.isDefault = part == Part::Default;
    if (entry.property == KROrdinal::OtherDate) dateColumns_.push_back(index);
  }
}
