#include "import/KRCSVPlan.h"

#include <algorithm>
#include <cstdint>
#include <unordered_map>

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

/// Finds the entry that a column belongs to: of the same property, number and label; columns without a number are
/// values of their own, except the parts of addresses and dates. It looks at few entries, however many columns a file
/// has.
class KRCSVPlan::EntryFinder {
 public:
  explicit EntryFinder(std::vector<Entry>& entries) : entries_(entries) {}

  Entry& entryFor(const KRCSVColumn& column) {
    Known& known = known_[uint64_t{column.number} << 32U | static_cast<uint64_t>(column.target.property)];
    const Part part = column.target.part;
    const bool isBeside = part == Part::Label || part == Part::Service || part == Part::Main;
    if (isBeside && !known.all.empty()) return entries_[known.all.back()];
    if (!isBeside) {
      if (Entry* found = findIn(known, column)) return *found;
    }
    known.all.push_back(entries_.size());
    known.waiting.push_back(entries_.size());
    return entries_.emplace_back(Entry{column.target.property, column.number});
  }

 private:
  /// The entries of one property and number.
  struct Known {
    std::vector<size_t> all;
    /// Those that had no column of a value when they were last looked at, and a few that have one by now.
    std::vector<size_t> waiting;
  };

  Entry* findIn(Known& known, const KRCSVColumn& column) {
    const Part part = column.target.part;
    const bool isPart = isPartOfAddress(part) || isPartOfDate(part) || column.target.property == KROrdinal::Address;
    while (!known.waiting.empty() && !entries_[known.waiting.back()].values.empty()) known.waiting.pop_back();
    const auto belongs = [&](size_t place) {
      const Entry& each = entries_[place];
      if (!isPart && !each.values.empty()) return false;
      if (!isPart && column.number == 0) return each.labels != kNone;
      return each.label == column.label || each.label.isNothing() || column.label.isNothing();
    };
    const std::vector<size_t>& among = isPart ? known.all : known.waiting;
    const auto found = std::find_if(among.rbegin(), among.rend(), belongs);
    return found == among.rend() ? nullptr : &entries_[*found];
  }

  std::vector<Entry>& entries_;
  std::unordered_map<uint64_t, Known> known_;
};

KRCSVPlan::KRCSVPlan(const KRCSVMapping& mapping) {
  EntryFinder finder(entries_);
  for (size_t i = 0; i < mapping.columns().size(); ++i) {
    const KRCSVColumn& column = mapping.columns()[i];
    if (column.target.isIgnored()) continue;
    const KRProperty* property = KRProperty::propertyWithOrdinal(column.target.property);
    if (column.target.property == KROrdinal::Name) {
      planName(column, i);
    } else if (property->isMultiple()) {
      planEntry(column, i, finder.entryFor(column));
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

void KRCSVPlan::planEntry(const KRCSVColumn& column, size_t index, Entry& entry) {
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
