#include "import/KRCSVRowPersons.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "contacts/model/KRObjectPersonName.h"
#include "import/KRCSVFile.h"

namespace {

/// The parts of a name that is being put together.
struct Parts {
  KRString first;
  KRString middle;
  KRString last;

  void set(const KRString& part, const KRString& value) {
    if (part == "First") first = value;
    if (part == "Middle") middle = value;
    if (part == "Last") last = value;
  }

  /// A whole name, cut at single spaces. From the third word on all is the last name, joined without spaces: kept so on
  /// purpose. One or two words leave the parts that they do not name as they are.
  void setWhole(std::string_view name) {
    const size_t afterFirst = std::min(name.find(' '), name.size());
    first = word(name.substr(0, afterFirst));
    if (afterFirst == name.size()) return;
    name.remove_prefix(afterFirst + 1);
    const size_t afterSecond = name.find(' ');
    if (afterSecond == std::string_view::npos) {
      last = word(name);
      return;
    }
    middle = word(name.substr(0, afterSecond));
    std::string rest(name.substr(afterSecond + 1));
    std::erase(rest, ' ');
    if (!rest.empty()) last = word(rest);
  }

 private:
  static KRString word(std::string_view text) { return text.empty() ? KRString() : KRString::trusted(text); }
};

KRValue converted(const KRString& text, int32_t type) {
  switch (type) {
    case KRValueType::Date: {
      const std::optional<KRDate> date = KRPersonCSVLoad::dateWithString(text);
      return date ? KRValue(*date) : KRValue();
    }
    case KRValueType::Phone:
      return krMake<KRObjectPhone>(text);
    case KRValueType::Email:
      return krMake<KRObjectEmail>(text);
    case KRValueType::Address:
      return KRPersonCSVLoad::addressValueWithString(text);
    case KRValueType::TextList:
      return KRPersonCSVLoad::arrayValueWithString(text);
    case KRValueType::InstantMessage:
      return KRPersonCSVLoad::instantMessageValue(text);
    default:
      return text;
  }
}

/// What a single value of that type becomes; only dates and lists are made something else.
KRValue convertedSingle(const KRString& text, int32_t type) {
  return type == KRValueType::Date || type == KRValueType::TextList ? converted(text, type) : KRValue(text);
}

}  // namespace

KRCSVRowPersons::KRCSVRowPersons(const KRPersonCSVLoad::Mapping& mapping) {
  for (const auto& [name, items] : mapping) {
    const KRProperty* property = KRProperty::propertyWithName(name);
    if (property == nullptr) continue;
    Fed fed{property, {}, krMake<KRLabel>(property->displayName())};
    for (const KRRef<KRCSVPropertyItem>& item : items) {
      fed.columns.push_back({static_cast<uint64_t>(item->index()), item->label(), krMake<KRLabel>(item->label())});
    }
    fed_.push_back(std::move(fed));
  }
  std::sort(fed_.begin(), fed_.end(),
            [](const Fed& a, const Fed& b) { return a.property->ordinal() < b.property->ordinal(); });
}

KRRef<IKRPerson> KRCSVRowPersons::personOfRow(const KRCSVFile& file, uint64_t row) {
  auto person = krMake<KRTempPerson>();
  person->reserveValues(fed_.size());
  for (const Fed& fed : fed_) {
    const bool isName = fed.property->ordinal() == KROrdinal::Name;
    const auto make = isName ? name : fed.property->isMultiple() ? multiple : single;
    person->setValue(make(fed, file, row), fed.property);
  }
  return person;
}

KRRef<KRStoredValue> KRCSVRowPersons::name(const Fed& fed, const KRCSVFile& file, uint64_t row) {
  Parts parts;
  for (const Column& column : fed.columns) {
    const KRString value = file.valueAtRow(row, column.index);
    if (value.isEmpty()) continue;
    if (column.part.isNothing()) {
      parts.setWhole(value.view());
    } else {
      parts.set(column.part, value);
    }
  }
  // Also when there is no part: every person that is imported has a name.
  return krMake<KRMutableSingleValue>(krMake<KRObjectPersonName>(parts.first, parts.middle, parts.last), fed.label,
                                      fed.property->valueType());
}

KRRef<KRStoredValue> KRCSVRowPersons::single(const Fed& fed, const KRCSVFile& file, uint64_t row) {
  // Only the first column counts, also when it is empty in this row.
  const KRString text = file.valueAtRow(row, fed.columns.front().index);
  if (text.isEmpty()) return {};
  return KRPersonCSVLoad::singleValueByValue(convertedSingle(text, fed.property->valueType()), fed.label,
                                             fed.property->valueType());
}

KRRef<KRStoredValue> KRCSVRowPersons::multiple(const Fed& fed, const KRCSVFile& file, uint64_t row) {
  auto entries = krMake<KRMutableMultipleValue>();
  const int32_t type = fed.property->subValueType();
  for (const Column& column : fed.columns) {
    const KRString text = file.valueAtRow(row, column.index);
    if (text.isEmpty()) continue;
    entries->addValue(KRPersonCSVLoad::singleValueByValue(converted(text, type), column.label, type));
  }
  return entries;
}
