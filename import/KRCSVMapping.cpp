#include "import/KRCSVMapping.h"

#include <algorithm>
#include <map>
#include <string>

#include "import/KRCSVHeadings.h"
#include "import/KRPersonCSVLoad.h"
#include "platform/KRPreferences.h"

namespace {

using Part = KRCSVTarget::Part;
using Why = KRCSVColumn::Why;

constexpr KRText kSavedKey = "KRCSVMappings";
constexpr KRText kShortPreset = "phone-book";

constexpr KRCSVTarget kWholeName = {KROrdinal::Name, Part::Whole};
constexpr KRCSVTarget kFirstName = {KROrdinal::Name, Part::First};
constexpr KRCSVTarget kLastName = {KROrdinal::Name, Part::Last};
constexpr KRCSVTarget kTitle = {KROrdinal::Title, Part::Whole};
constexpr KRCSVTarget kJobTitle = {KROrdinal::JobTitle, Part::Whole};

std::string normalized(KRText heading) {
  uint32_t number = 0;
  return KRCSVHeadings::normalized(heading, number);
}

bool isBlank(KRText text) {
  return text.view().find_first_not_of(" \t\r\n") == std::string_view::npos;
}

bool looksLikePhone(KRText text) {
  const auto digits =
      std::count_if(text.view().begin(), text.view().end(), [](char c) { return c >= '0' && c <= '9'; });
  return digits >= 5 && KRPersonCSVLoad::isPhoneByValue(text);
}

/// Whether a column has values in the rows and all of them pass.
template <class Test>
bool areAll(const std::vector<KRCSVMapping::Row>& rows, size_t column, Test test) {
  bool hasAny = false;
  for (const KRCSVMapping::Row& row : rows) {
    if (column >= row.size() || isBlank(row[column])) continue;
    if (!test(KRText(row[column]))) return false;
    hasAny = true;
  }
  return hasAny;
}

void guess(KRCSVColumn& column, const std::vector<KRCSVMapping::Row>& rows, size_t index) {
  column.label = column.heading;
  if (areAll(rows, index, KRPersonCSVLoad::isEmailByValue)) {
    column.target = {KROrdinal::Email, Part::Whole};
    column.why = Why::Values;
  } else if (areAll(rows, index, looksLikePhone)) {
    column.target = {KROrdinal::Phone, Part::Whole};
    column.why = Why::Values;
  }
}

KRString columnName(size_t index) {
  return KRString("Column " + std::to_string(index + 1));
}

std::string joined(const KRStringList& texts) {
  std::string list;
  for (const KRString& text : texts) {
    if (!list.empty()) list += ", ";
    list += text.view();
  }
  return list;
}

KRRef<KRValueMap> mappingsIn(const KRValue& saved) {
  auto copy = krMake<KRValueMap>();
  if (const auto* map = saved.as<KRValueMap>()) {
    for (const KRValueMap::Entry& entry : map->entries()) copy->set(entry.key, entry.value);
  }
  return copy;
}

KRRef<KRValueMap> savedMappings() {
  return mappingsIn(KRPreferences::standard()->value(kSavedKey));
}

KRString textOf(const KRValueMap& map, KRText key) {
  const KRValue* value = map.find(key);
  return value != nullptr ? value->text() : KRString();
}

KRRef<KRValueMap> savedColumn(const KRCSVColumn& column) {
  auto map = krMake<KRValueMap>();
  map->set("heading"_kr, column.heading);
  map->set("target"_kr, column.target.name());
  if (!column.label.isNothing()) map->set("label"_kr, column.label);
  if (column.number != 0) map->set("number"_kr, KRValue::whole(column.number));
  return map;
}

}  // namespace

KRString KRCSVColumn::reason() const {
  switch (why) {
    case Why::Heading:
      return preset.isNothing() ? "heading"_kr : krConcat({"heading, ", preset});
    case Why::Values:
      return "first values"_kr;
    case Why::Chosen:
      return "chosen"_kr;
    case Why::Saved:
      return "saved mapping"_kr;
    case Why::Unknown:
      break;
  }
  return "not known, kept as it is"_kr;
}

KRCSVMapping KRCSVMapping::of(const Row& headings, const std::vector<Row>& firstRows, KRText preset) {
  KRCSVMapping mapping;
  for (size_t i = 0; i < headings.size(); ++i) {
    KRCSVColumn column{isBlank(headings[i]) ? columnName(i) : headings[i]};
    std::optional<KRCSVHeadings::Meaning> meaning = KRCSVHeadings::meaningOf(headings[i], preset);
    if (!meaning && !preset.isNothing()) meaning = KRCSVHeadings::meaningOf(headings[i], kShortPreset);
    if (headings[i] == kOwnMark || headings[i] == kOwnRawMark) {
      mapping.isOwn_ = true;
      mapping.isOwnRaw_ = headings[i] == kOwnRawMark;
      column.target.part = Part::Ignored;
      column.why = Why::Heading;
    } else if (meaning) {
      column.target = meaning->target;
      column.label = meaning->label;
      column.number = meaning->number;
      // What has no property of its own is told apart by its heading.
      const bool isOther = column.target.property == KROrdinal::Other && column.target.part != Part::Label;
      if (isOther && column.label.isNothing() && meaning->preset != "numbered-pairs"_kr) column.label = column.heading;
      if (column.target.part == Part::Default) column.label = column.heading;
      column.why = Why::Heading;
      column.preset = meaning->preset;
    } else {
      guess(column, firstRows, i);
    }
    mapping.columns_.push_back(std::move(column));
  }
  if (mapping.isOwn_) {
    mapping.settleOwn();
    return mapping;
  }
  mapping.settleNames();
  mapping.settleTitles();
  mapping.settleBirthday();
  return mapping;
}

KRCSVMapping KRCSVMapping::ofColumns(size_t count, const std::vector<Row>& firstRows) {
  KRCSVMapping mapping;
  for (size_t i = 0; i < count; ++i) {
    mapping.columns_.push_back({columnName(i)});
    guess(mapping.columns_.back(), firstRows, i);
  }
  return mapping;
}

/// A picture is a picture only in a file of our own; elsewhere the column holds an address.
void KRCSVMapping::settleOwn() {
  for (KRCSVColumn& column : columns_) {
    if (column.heading == kOwnPhoto)
      column = {column.heading, {KROrdinal::Thumbnail, Part::Whole}, {}, 0, Why::Heading};
  }
}

bool KRCSVMapping::feeds(KRCSVTarget target) const {
  return std::any_of(columns_.begin(), columns_.end(), [&](const KRCSVColumn& each) { return each.target == target; });
}

/// A plain "name" beside one other part of the name is the part that is missing.
void KRCSVMapping::settleNames() {
  const bool hasFirst = feeds(kFirstName);
  if (hasFirst == feeds(kLastName)) return;
  for (KRCSVColumn& column : columns_) {
    if (column.target != kWholeName) continue;
    const std::string heading = normalized(column.heading);
    if (heading == "name" || heading == "nom" || heading == "nombre") column.target = hasFirst ? kLastName : kFirstName;
  }
}

/// "Title" is the job, unless another column is; then it stands before the name. Of two that mean what stands before
/// the name, the second is the job.
void KRCSVMapping::settleTitles() {
  const auto isPlain = [](const KRCSVColumn& each) { return normalized(each.heading) == "title"; };
  const bool hasJob = std::any_of(columns_.begin(), columns_.end(), [&](const KRCSVColumn& each) {
    return each.target == kJobTitle && each.number == 0 && !isPlain(each);
  });
  const auto titles = std::count_if(columns_.begin(), columns_.end(), isPlain);
  bool isFirst = true;
  for (KRCSVColumn& column : columns_) {
    if (isPlain(column) && column.target == kJobTitle && (hasJob || (titles > 1 && isFirst))) {
      column.target = kTitle;
      isFirst = false;
    }
  }
  if (feeds(kJobTitle)) return;
  KRCSVColumn* before = nullptr;
  for (KRCSVColumn& column : columns_) {
    if (column.target != kTitle) continue;
    if (before != nullptr && normalized(before->heading) == normalized(column.heading)) column.target = kJobTitle;
    before = &column;
  }
}

/// Beside a year of birth the birthday is the day of the month.
void KRCSVMapping::settleBirthday() {
  const KRCSVTarget day = {KROrdinal::Birthday, Part::Day};
  if (!feeds({KROrdinal::Birthday, Part::Year}) || feeds(day)) return;
  for (KRCSVColumn& column : columns_) {
    if (column.target == KRCSVTarget{KROrdinal::Birthday, Part::Whole}) column.target = day;
  }
}

KRString KRCSVMapping::preset() const {
  std::map<std::string, size_t> counts;
  for (const KRCSVColumn& column : columns_) {
    if (!column.preset.isNothing()) ++counts[std::string(column.preset.view())];
  }
  const auto most =
      std::max_element(counts.begin(), counts.end(), [](const auto& a, const auto& b) { return a.second < b.second; });
  return most == counts.end() ? KRString() : KRString(most->first);
}

std::vector<KRCSVColumn*> KRCSVMapping::columnsNamed(KRText heading) {
  std::vector<KRCSVColumn*> found;
  for (KRCSVColumn& column : columns_) {
    if (column.heading == heading) found.push_back(&column);
  }
  const std::string text(heading.view());
  if (!found.empty()) return found;
  uint32_t number = 0;
  const std::string sought = KRCSVHeadings::normalized(heading, number);
  for (size_t i = 0; i < columns_.size(); ++i) {
    uint32_t other = 0;
    const bool isSame = KRCSVHeadings::normalized(columns_[i].heading, other) == sought && other == number;
    const bool isPlace = sought == "column #" && number == i + 1;
    if (isSame || isPlace) found.push_back(&columns_[i]);
  }
  return found;
}

KRError KRCSVMapping::noSuchHeading(KRText heading) const {
  KRStringList headings;
  for (const KRCSVColumn& column : columns_) headings.push_back(column.heading);
  return {KRErrorCode::InvalidArgument,
          "there is no column \"" + std::string(heading.view()) + "\"; the columns are: " + joined(headings)};
}

KRResult<void> KRCSVMapping::set(KRText heading, KRText property, KRText label) {
  const std::optional<KRCSVTarget> target = KRCSVTarget::named(property);
  if (!target) {
    return KRError{KRErrorCode::InvalidArgument, "there is no property \"" + std::string(property.view()) +
                                                     "\"; known are: " + joined(KRCSVTarget::names())};
  }
  const std::vector<KRCSVColumn*> found = columnsNamed(heading);
  if (found.empty()) return noSuchHeading(heading);
  for (KRCSVColumn* column : found) {
    // A column that is moved within its property stays tied to its neighbours.
    if (column->target.property != target->property) column->number = 0;
    column->target = *target;
    column->label = KRString(label);
    column->why = Why::Chosen;
    column->preset = KRString();
  }
  return {};
}

KRResult<void> KRCSVMapping::set(KRText assignment) {
  const std::string_view text = assignment.view();
  // A heading may hold the sign itself: the longest one that there is counts.
  size_t sign = text.rfind('=');
  while (sign != std::string_view::npos && sign != 0 && columnsNamed(text.substr(0, sign)).empty()) {
    const size_t before = text.rfind('=', sign - 1);
    if (before == std::string_view::npos) break;
    sign = before;
  }
  if (sign == std::string_view::npos) {
    return KRError{KRErrorCode::InvalidArgument,
                   "\"" + std::string(text) + "\" is not of the form HEADING=PROPERTY or HEADING=PROPERTY:LABEL"};
  }
  const std::string_view choice = text.substr(sign + 1);
  const size_t colon = choice.find(':');
  const KRText label = colon == std::string_view::npos ? KRText() : KRText(choice.substr(colon + 1));
  return set(text.substr(0, sign), choice.substr(0, colon), label);
}

KRResult<void> KRCSVMapping::save(const KRString& name) const {
  if (name.isEmpty()) return KRError{KRErrorCode::InvalidArgument, "a mapping is saved under a name"};
  auto list = krMake<KRValueList>();
  for (const KRCSVColumn& column : columns_) list->values().emplace_back(savedColumn(column));
  KRPreferences::standard()->update(kSavedKey, [name, list](const KRValue& now) {
    const KRRef<KRValueMap> all = mappingsIn(now);
    all->set(name, list);
    return KRValue(all);
  });
  return KRPreferences::standard()->flush();
}

KRResult<void> KRCSVMapping::use(const KRString& name) {
  const KRRef<KRValueMap> all = savedMappings();
  const KRValue* saved = name.isNothing() ? nullptr : all->find(name);
  const auto* list = saved != nullptr ? saved->as<KRValueList>() : nullptr;
  if (list == nullptr) {
    const KRStringList names = savedNames();
    return KRError{KRErrorCode::NotFound,
                   "there is no mapping \"" + std::string(name.view()) + "\"" +
                       (names.empty() ? std::string("; none is saved") : "; saved are: " + joined(names))};
  }
  for (const KRCSVColumn& saved : savedColumns(name)) {
    for (KRCSVColumn* column : columnsNamed(saved.heading)) {
      *column = {column->heading, saved.target, saved.label, saved.number, Why::Saved};
    }
  }
  return {};
}

std::vector<KRCSVColumn> KRCSVMapping::savedColumns(const KRString& name) {
  std::vector<KRCSVColumn> columns;
  const KRRef<KRValueMap> all = savedMappings();
  const KRValue* saved = name.isNothing() ? nullptr : all->find(name);
  const auto* list = saved != nullptr ? saved->as<KRValueList>() : nullptr;
  if (list == nullptr) return columns;
  for (const KRValue& value : list->values()) {
    const auto* entry = value.as<KRValueMap>();
    if (entry == nullptr) continue;
    const std::optional<KRCSVTarget> target = KRCSVTarget::named(textOf(*entry, "target"));
    if (!target) continue;
    const KRValue* number = entry->find("number");
    const bool isKnown = number != nullptr && number->asWhole() != nullptr;
    columns.push_back({textOf(*entry, "heading"), *target, textOf(*entry, "label"),
                       isKnown ? static_cast<uint32_t>(*number->asWhole()) : 0, Why::Saved});
  }
  return columns;
}

KRStringList KRCSVMapping::savedNames() {
  KRStringList names;
  const KRRef<KRValueMap> all = savedMappings();
  for (const KRValueMap::Entry& entry : all->entries()) names.push_back(entry.key);
  std::sort(names.begin(), names.end(), [](const KRString& a, const KRString& b) { return a.view() < b.view(); });
  return names;
}

KRResult<void> KRCSVMapping::removeSaved(const KRString& name) {
  KRPreferences::standard()->update(kSavedKey, [name](const KRValue& now) {
    auto kept = krMake<KRValueMap>();
    const KRRef<KRValueMap> all = mappingsIn(now);
    for (const KRValueMap::Entry& entry : all->entries()) {
      if (!(entry.key == name)) kept->set(entry.key, entry.value);
    }
    return KRValue(kept);
  });
  return KRPreferences::standard()->flush();
}
