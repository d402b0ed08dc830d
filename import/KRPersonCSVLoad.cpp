#include "import/KRPersonCSVLoad.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "contacts/model/KRAddressFormater.h"
#include "contacts/model/KRCountry.h"
#include "import/KRCSVFile.h"
#include "import/KRCSVReading.h"
#include "import/KRCSVRowPersons.h"
#include "platform/KRCaseFolding.h"

namespace {

/// What a column of one of these headings, in lower case, feeds whatever else is known.
struct HeadingRow {
  KRText heading;
  KRString property;
  /// Which part of the name it is; nothing for a whole name.
  KRString part;
  bool isInOlderMapping;
};

// Last and middle names are crossed, and kept so on purpose.
constexpr HeadingRow kHeadingRows[] = {
    {"first", KRProPertyName, "First"_kr, true},      {"first name", KRProPertyName, "First"_kr, true},
    {"first_name", KRProPertyName, "First"_kr, true}, {"last", KRProPertyName, "Middle"_kr, true},
    {"last name", KRProPertyName, "Middle"_kr, true}, {"last_name", KRProPertyName, "Middle"_kr, true},
    {"middle", KRProPertyName, "Last"_kr, true},      {"middle name", KRProPertyName, "Last"_kr, true},
    {"middle_name", KRProPertyName, "Last"_kr, true}, {"name", KRProPertyName, KRString(), true},
    {"phone", KRProPertyPhone, KRString(), true},     {"mobile", KRProPertyPhone, KRString(), true},
    {"iphone", KRProPertyPhone, KRString(), false},
};

/// The property of the table's row for the heading, or nothing; `label` is set for a part of a name.
KRString propertyOfTable(KRText lowered, bool isOlder, KRString& label) {
  const auto* row = std::find_if(std::begin(kHeadingRows), std::end(kHeadingRows), [&](const HeadingRow& each) {
    return each.heading == lowered && (each.isInOlderMapping || !isOlder);
  });
  if (row == std::end(kHeadingRows)) return {};
  if (row->property == KRProPertyName) label = row->part;
  return row->property;
}

struct Candidate {
  KRString name;
  KRString displayName;
  KRString loweredName;
  KRString loweredDisplayName;
};

/// The standard properties that a heading can name, in standard order.
std::vector<Candidate> candidates() {
  std::vector<Candidate> list;
  for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
    const KRString name = property->name();
    if (name == KRProPertyName || name == KRProPertyOther || name == KRProPertyThumbnail) continue;
    const KRString displayName = property->displayName();
    list.push_back({name, displayName, krLower(name), krLower(displayName)});
  }
  return list;
}

/// The first of the properties for which the test is true, or `KRProPertyOther`.
template <class Test>
KRString firstWhere(const std::vector<Candidate>& properties, Test test) {
  const auto found = std::find_if(properties.begin(), properties.end(), test);
  return found == properties.end() ? KRProPertyOther : found->name;
}

bool isContained(const KRString& part, const KRString& whole) {
  return !part.isEmpty() && whole.view().find(part.view()) != std::string_view::npos;
}

bool containsEither(const Candidate& property, const KRString& lowered) {
  return isContained(property.loweredName, lowered) || isContained(property.loweredDisplayName, lowered);
}

KRPersonCSVLoad::Mapping::value_type::second_type& itemsOf(KRPersonCSVLoad::Mapping& mapping, const KRString& name) {
  const auto found = std::find_if(mapping.begin(), mapping.end(), [&](const auto& each) { return each.first == name; });
  if (found != mapping.end()) return found->second;
  mapping.push_back({name, {}});
  return mapping.back().second;
}

/// The pieces of the text between separators: one more than there are separators.
std::vector<std::string_view> pieces(std::string_view text, char separator) {
  std::vector<std::string_view> list;
  while (true) {
    const size_t end = text.find(separator);
    list.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return list;
    text.remove_prefix(end + 1);
  }
}

/// In single precision, as everywhere in percentages.
double percentOf(uint64_t done, uint64_t all) {
  return static_cast<double>(static_cast<float>(done) * 100.0F / static_cast<float>(all));
}

std::optional<int> number(std::string_view digits) {
  int value = 0;
  for (const char digit : digits) {
    if (digit < '0' || digit > '9') return std::nullopt;
    value = value * 10 + (digit - '0');
  }
  return value;
}

}  // namespace

KRRef<KRPersonCSVLoad> KRPersonCSVLoad::initWithFile(const KRString& path) {
  return isFile(path) ? krMake<KRPersonCSVLoad>(path) : KRRef<KRPersonCSVLoad>();
}

// The mapping.

KRPersonCSVLoad::Mapping KRPersonCSVLoad::propertyByHeadItemArray(const KRStringList& headItemArray,
                                                                  const KRStringList& firstItemArray) {
  Mapping mapping;
  for (size_t i = 0; i < headItemArray.size(); ++i) {
    KRString label;
    const KRString name =
        propertyNameByHeadItemName(headItemArray[i], &label, i < firstItemArray.size() ? firstItemArray[i] : ""_kr);
    itemsOf(mapping, name).push_back(krMake<KRCSVPropertyItem>(label, static_cast<int64_t>(i)));
  }
  return mapping;
}

KRPersonCSVLoad::Mapping KRPersonCSVLoad::propertyByHeadItemArray(const KRStringList& headItemArray) {
  Mapping mapping;
  for (size_t i = 0; i < headItemArray.size(); ++i) {
    KRString label;
    const KRString name = propertyNameByHeadItemName(headItemArray[i], &label);
    itemsOf(mapping, name).push_back(krMake<KRCSVPropertyItem>(label, static_cast<int64_t>(i)));
  }
  return mapping;
}

KRString KRPersonCSVLoad::propertyNameByHeadItemName(const KRString& headItemName, KRString* outLabel,
                                                     const KRString& firstItem) {
  KRString unused;
  KRString& label = outLabel != nullptr ? *outLabel : unused;
  label = headItemName;
  const KRString lowered = krLower(headItemName);
  if (KRString name = propertyOfTable(lowered, false, label); !name.isNothing()) return name;

  const std::vector<Candidate> properties = candidates();
  KRString name = firstWhere(properties, [&](const Candidate& each) {
    return sameText(each.loweredName, lowered) || sameText(each.loweredDisplayName, lowered);
  });
  if (name == KRProPertyOther) {
    name = firstWhere(properties, [&](const Candidate& each) { return containsEither(each, lowered); });
  }
  if (name == KRProPertyOther && isPhoneByValue(firstItem)) return KRProPertyPhone;
  if (name == KRProPertyOther && isEmailByValue(firstItem)) return KRProPertyEmail;
  return name;
}

KRString KRPersonCSVLoad::propertyNameByHeadItemName(const KRString& headItemName, KRString* outLabel) {
  KRString unused;
  KRString& label = outLabel != nullptr ? *outLabel : unused;
  label = headItemName;
  const KRString lowered = krLower(headItemName);
  if (KRString name = propertyOfTable(lowered, true, label); !name.isNothing()) return name;
  return firstWhere(candidates(), [&](const Candidate& each) {
    return sameText(each.name, headItemName) || sameText(each.displayName, headItemName) ||
           containsEither(each, lowered);
  });
}

bool KRPersonCSVLoad::isPhoneByValue(KRText value) {
  return value.allUnits([](char16_t unit) {
    const auto low = static_cast<unsigned char>(unit & 0xFFU);
    return (low >= 0x30 && low <= 0x39) || low == 0x20 || low == 0xA0 || low == 0x28 || low == 0x29 || low == 0x2B ||
           low == 0x2D;
  });
}

bool KRPersonCSVLoad::isEmailByValue(KRText value) {
  return value.contains('@') && value.contains('.');
}

// Values.

std::optional<KRDate> KRPersonCSVLoad::dateWithString(KRText string) {
  const std::string_view text = string.view();
  constexpr size_t kSize = 10;
  if (text.size() != kSize || text[4] != '/' || text[7] != '/') return std::nullopt;
  const std::optional<int> year = number(text.substr(0, 4));
  const std::optional<int> month = number(text.substr(5, 2));
  const std::optional<int> day = number(text.substr(8, 2));
  return year && month && day ? KRDate::make(year, *month, *day) : std::nullopt;
}

KRRef<KRValueList> KRPersonCSVLoad::arrayValueWithString(const KRString& string) {
  auto list = krMake<KRValueList>();
  if (string.isNothing()) return list;
  for (const std::string_view piece : pieces(string.view(), ',')) list->values().emplace_back(KRString::trusted(piece));
  return list;
}

KRRef<KRObjectAddress> KRPersonCSVLoad::addressValueWithString(const KRString& string) {
  auto address = krMake<KRObjectAddress>();
  address->setCountryCode(KRCountry::local()->code());
  const auto& fields = KRAddressFormater::fieldArrayLocal();
  if (fields.empty() || string.isNothing()) return address;
  const std::vector<std::string_view> words = pieces(string.view(), ' ');
  for (size_t i = 0; i < words.size(); ++i) {
    address->setStringValue(KRString::trusted(words[i]), fields[std::min(i, fields.size() - 1)]->name());
  }
  return address;
}

KRRef<KRObjectInstantMessage> KRPersonCSVLoad::instantMessageValue(const KRString& string) {
  std::string_view text = string.view();
  const size_t space = text.find(' ');
  if (space == std::string_view::npos) return {};
  const std::string_view service = text.substr(0, space);
  const std::string_view removed = text.substr(0, space + 1);
  std::string userName;
  for (size_t at = 0; (at = text.find(removed)) != std::string_view::npos; text.remove_prefix(at + removed.size())) {
    userName.append(text.substr(0, at));
  }
  userName.append(text);
  return krMake<KRObjectInstantMessage>(KRString::trusted(userName),
                                        KRInstantMessageServer::serverWithDisplayName(service));
}

// The run.

void KRPersonCSVLoad::readPersons(const Run& run) {
  const KRCSVDialect chosen = dialect();
  if (chosen.kind == KRCSVDialect::Kind::Strict) {
    readStrictly();
  } else {
    readDialect(run, chosen);
  }
}

void KRPersonCSVLoad::readDialect(const Run& run, const KRCSVDialect& dialect) {
  KRResult<KRCSVReading> reading = KRCSVReading::open(filePath(), dialect);
  if (!reading) {
    note({0, 0, true, KRString(reading.error().sentence)});
    return;
  }
  if (std::optional<KRCSVMapping> chosen = mapping()) {
    if (chosen->columns().size() == reading->mapping().columns().size()) {
      reading->mapping() = *std::move(chosen);
    } else {
      note({0, 0, false, "the chosen mapping has other columns than the file and is not used"_kr});
    }
  }
  const size_t count = reading->personCount();
  if (count == 0) return;
  sendNumber(static_cast<int64_t>(count));
  reading->persons(
      [&](const KRRef<KRTempPerson>& person, size_t row) {
        if (!run.isLoading()) return false;
        sendProgress(percentOf(row + 1, count + 1), person);
        return run.isLoading();
      },
      notes());
}

void KRPersonCSVLoad::readStrictly() {
  const KRRef<KRCSVFile> file = KRCSVFile::initWithFile(filePath());
  if (!file->failure().empty()) note({0, 0, true, KRString(file->failure())});
  const uint64_t rows = file->rowCount();
  size_t dropped = 0;
  if (rows < 2) {
    noteDropped(*file, dropped, UINT64_MAX);
    return;
  }
  sendNumber(static_cast<int64_t>(rows) - 1);
  KRCSVRowPersons persons(propertyByHeadItemArray(*file->valuesOfRow(0), *file->valuesOfRow(1)));
  // To the last row, also when the loader has been stopped.
  for (uint64_t row = 1; row < rows; ++row) {
    noteDropped(*file, dropped, file->lineOfRow(row));
    sendProgress(percentOf(row + 1, rows), persons.personOfRow(*file, row));
  }
  noteDropped(*file, dropped, UINT64_MAX);
}

void KRPersonCSVLoad::noteDropped(const KRCSVFile& file, size_t& next, uint64_t beforeLine) const {
  const std::vector<uint64_t>& lines = file.droppedLines();
  for (; next < lines.size() && lines[next] < beforeLine; ++next) {
    note({static_cast<size_t>(lines[next]), 0, true, "the row has fewer fields than there are headings"_kr,
          file.droppedTexts()[next]});
  }
}
