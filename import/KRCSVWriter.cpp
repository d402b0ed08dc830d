#include "import/KRCSVWriter.h"

#include <algorithm>

#include "contacts/vcard/KRVCardText.h"
#include "import/KRCSVMapping.h"
#include "platform/KRFile.h"

namespace {

constexpr std::string_view kBetweenTags = " ::: ";

/// The properties of one value with their headings, in the order of their columns. The parts of the name stand behind
/// the first.
struct SingleColumn {
  KROrdinal property;
  std::string_view heading;
};
constexpr SingleColumn kBeforeName = {KROrdinal::Title, "Name Prefix"};
constexpr SingleColumn kSingles[] = {
    {KROrdinal::Suffix, "Name Suffix"},
    {KROrdinal::PhoneticFirstName, "Phonetic First Name"},
    {KROrdinal::PhoneticMiddleName, "Phonetic Middle Name"},
    {KROrdinal::PhoneticLastName, "Phonetic Last Name"},
    {KROrdinal::Nickname, "Nickname"},
    {KROrdinal::Company, "Organization Name"},
    {KROrdinal::JobTitle, "Organization Title"},
    {KROrdinal::Department, "Organization Department"},
    {KROrdinal::Role, "Role"},
    {KROrdinal::IsOrganization, "Is Organization"},
    {KROrdinal::Birthday, "Birthday"},
    {KROrdinal::Note, "Notes"},
};

struct EntryColumns {
  KROrdinal property;
  std::string_view word;
};
constexpr EntryColumns kEntries[] = {
    {KROrdinal::Email, "E-mail"},         {KROrdinal::Phone, "Phone"},           {KROrdinal::Address, "Address"},
    {KROrdinal::InstantMessage, "IM"},    {KROrdinal::URL, "Website"},           {KROrdinal::OtherDate, "Event"},
    {KROrdinal::RelatedName, "Relation"}, {KROrdinal::SocialProfile, "Profile"}, {KROrdinal::Other, "Custom Field"},
};

constexpr std::array<std::string_view, kKRAddressFieldCount> kFieldHeadings = {
    "PO Box", "Extended Address", "Street", "City", "Region", "Postal Code", "Country"};

constexpr size_t at(KROrdinal property) noexcept {
  return static_cast<size_t>(property);
}

/// Whether a spreadsheet would take a cell for something else than text, or reading would take off what is the cell's
/// own.
bool needsGuard(std::string_view text) noexcept {
  constexpr std::string_view kStarts = "=+-@'\t\r";
  return !text.empty() && kStarts.find(text.front()) != std::string_view::npos;
}

bool needsQuotes(std::string_view text) noexcept {
  return text.empty() || text.front() == ' ' || text.back() == ' ' ||
         text.find_first_of(",;\"\r\n\t") != std::string_view::npos;
}

/// Whether a tag would not come back from a list as it was.
bool isOddTag(KRText tag) noexcept {
  const std::string_view text = tag.view();
  return text.empty() || text.find(":::") != std::string_view::npos || text.front() == ' ' || text.back() == ' ' ||
         text.find_first_of("\t\r\n") != std::string_view::npos || text.front() == ':' || text.back() == ':' ||
         text.find("\xC2\xA0") != std::string_view::npos;
}

/// The place of the main entry of several, or of none that is marked the first.
size_t mainPlace(KROrdinal property, const IKRPerson& person) {
  if (person.entryCount(property) < 2) return 0;
  const auto stored = person.valueByPropertyName(KRProperty::propertyWithOrdinal(property)->name());
  const auto* values = dynamic_cast<const KRMutableMultipleValue*>(stored.get());
  if (values == nullptr) return 0;
  for (size_t i = 0; i < values->count(); ++i) {
    if (values->valueAtIndex(i) == values->mainValue()) return i;
  }
  return 0;
}

}  // namespace

// Which columns there are.

void KRCSVWriter::measure(const IKRPerson& person) {
  hold_.empty();
  hasMiddleName_ = hasMiddleName_ || !person.readName(hold_).middle.isNothing();
  const auto look = [&](KROrdinal property) {
    bool& isUsed = singles_[at(property)];
    isUsed = isUsed || !person.readText(property, hold_).isNothing();
  };
  look(kBeforeName.property);
  for (const SingleColumn& column : kSingles) look(column.property);
  if (options_.hasPictures && !singles_[at(KROrdinal::Thumbnail)]) {
    const KRRef<KRData> picture = person.imageData();
    singles_[at(KROrdinal::Thumbnail)] = picture && !picture->bytes().empty();
  }
  size_t tags = 0;
  person.readEntries(KROrdinal::Tags, hold_, [&](const KREntryView& tag) {
    ++tags;
    hasOddTag_ = hasOddTag_ || isOddTag(tag.text);
    return true;
  });
  tags_ = std::max(tags_, tags);
  for (const EntryColumns& columns : kEntries) measureEntries(columns.property, person);
}

void KRCSVWriter::measureEntries(KROrdinal property, const IKRPerson& person) {
  Width& width = widths_[at(property)];
  size_t count = 0;
  person.readEntries(property, hold_, [&](const KREntryView& entry) {
    ++count;
    if (entry.address == nullptr) return true;
    for (size_t field = 0; field < kKRAddressFieldCount; ++field) {
      width.fields[field] = width.fields[field] || !entry.address->fields[field].isNothing();
    }
    width.hasCountryCode = width.hasCountryCode || !entry.address->countryCode.isNothing();
    return true;
  });
  width.entries = std::max(width.entries, count);
  width.hasMain = width.hasMain || mainPlace(property, person) != 0;
}

// Cells.

void KRCSVWriter::cell(KRText text, std::string& to) {
  if (isRowBegun_) to += ',';
  isRowBegun_ = true;
  if (text.isNothing()) return;
  const std::string_view bytes = text.view();
  const bool isGuarded = !options_.hasRawCells && needsGuard(bytes);
  const bool isQuoted = needsQuotes(bytes);
  if (isQuoted) to += '"';
  if (isGuarded) to += '\'';
  if (bytes.find('"') == std::string_view::npos) {
    to += bytes;
  } else {
    for (const char c : bytes) {
      if (c == '"') to += '"';
      to += c;
    }
  }
  if (isQuoted) to += '"';
}

void KRCSVWriter::endRow(std::string& to) {
  to += "\r\n";
  isRowBegun_ = false;
}

// The headings.

void KRCSVWriter::begin(std::string& to) {
  const size_t start = to.size();
  if (singles_[at(kBeforeName.property)]) cell(kBeforeName.heading, to);
  cell("First Name", to);
  if (hasMiddleName_) cell("Middle Name", to);
  cell("Last Name", to);
  for (const SingleColumn& column : kSingles) {
    if (singles_[at(column.property)]) cell(column.heading, to);
  }
  if (singles_[at(KROrdinal::Thumbnail)]) cell(KRCSVMapping::kOwnPhoto, to);
  if (hasOddTag_) {
    for (size_t i = 1; i <= tags_; ++i) cell(KRText(std::string_view("Label " + std::to_string(i))), to);
  } else if (tags_ != 0) {
    cell("Labels", to);
  }
  for (const EntryColumns& columns : kEntries) beginEntries(columns.property, columns.word, to);
  cell(options_.hasRawCells ? KRCSVMapping::kOwnRawMark : KRCSVMapping::kOwnMark, to);
  endRow(to);
  // No heading holds a comma.
  columnCount_ = static_cast<size_t>(std::count(to.begin() + static_cast<ptrdiff_t>(start), to.end(), ',')) + 1;
}

void KRCSVWriter::beginEntries(KROrdinal property, std::string_view word, std::string& to) {
  const Width& width = widths_[at(property)];
  for (size_t i = 1; i <= width.entries; ++i) {
    const std::string start = std::string(word) + " " + std::to_string(i) + " - ";
    const auto heading = [&](std::string_view what) {
      const std::string text = start + std::string(what);
      cell(KRText(std::string_view(text)), to);
    };
    heading("Label");
    if (width.hasMain) heading("Main");
    if (property == KROrdinal::InstantMessage) heading("Service");
    if (property != KROrdinal::Address) {
      heading("Value");
      continue;
    }
    for (size_t field = 0; field < kKRAddressFieldCount; ++field) {
      if (width.fields[field]) heading(kFieldHeadings[field]);
    }
    if (width.hasCountryCode) heading("Country Code");
  }
}

// A row.

void KRCSVWriter::append(const IKRPerson& person, std::string& to) {
  hold_.empty();
  appendSingle(kBeforeName.property, person, to);
  const KRNameView name = person.readName(hold_);
  cell(name.first, to);
  if (hasMiddleName_) cell(name.middle, to);
  cell(name.last, to);
  for (const SingleColumn& column : kSingles) appendSingle(column.property, person, to);
  if (singles_[at(KROrdinal::Thumbnail)]) {
    const KRRef<KRData> picture = person.imageData();
    const std::string text = picture ? krEncodeBase64(picture->bytes()) : std::string();
    cell(text.empty() ? KRText() : KRText(std::string_view(text)), to);
  }
  if (tags_ != 0) appendTags(person, to);
  for (const EntryColumns& columns : kEntries) appendEntries(columns.property, person, to);
  cell(KRText(), to);
  endRow(to);
}

void KRCSVWriter::appendSingle(KROrdinal property, const IKRPerson& person, std::string& to) {
  if (singles_[at(property)]) cell(person.readText(property, hold_), to);
}

void KRCSVWriter::appendTags(const IKRPerson& person, std::string& to) {
  std::string list;
  size_t count = 0;
  person.readEntries(KROrdinal::Tags, hold_, [&](const KREntryView& tag) {
    if (hasOddTag_) {
      cell(tag.text, to);
    } else {
      if (count != 0) list += kBetweenTags;
      list += tag.text.view();
    }
    ++count;
    return true;
  });
  if (!hasOddTag_) {
    cell(count == 0 ? KRText() : KRText(std::string_view(list)), to);
    return;
  }
  for (; count < tags_; ++count) cell(KRText(), to);
}

void KRCSVWriter::appendEntries(KROrdinal property, const IKRPerson& person, std::string& to) {
  const Width& width = widths_[at(property)];
  if (width.entries == 0) return;
  const size_t main = width.hasMain ? mainPlace(property, person) : 0;
  size_t count = 0;
  person.readEntries(property, hold_, [&](const KREntryView& entry) {
    appendEntry(property, &entry, main != 0 && main == count, to);
    ++count;
    return true;
  });
  for (; count < width.entries; ++count) appendEntry(property, nullptr, false, to);
}

void KRCSVWriter::appendEntry(KROrdinal property, const KREntryView* entry, bool isMain, std::string& to) {
  static constexpr KREntryView kNoEntry;
  const KREntryView& view = entry != nullptr ? *entry : kNoEntry;
  const Width& width = widths_[at(property)];
  cell(view.label, to);
  if (width.hasMain) cell(isMain ? KRText("YES") : KRText(), to);
  if (property == KROrdinal::InstantMessage) cell(view.server, to);
  if (property != KROrdinal::Address) {
    cell(view.text, to);
    return;
  }
  static constexpr KRAddressView kNoAddress;
  const KRAddressView& address = view.address != nullptr ? *view.address : kNoAddress;
  for (size_t field = 0; field < kKRAddressFieldCount; ++field) {
    if (width.fields[field]) cell(address.fields[field], to);
  }
  if (width.hasCountryCode) cell(address.countryCode, to);
}

std::string KRCSVWriter::bytes(const KRPersonList& persons, const Options& options) {
  KRCSVWriter writer(options);
  for (const IKRPerson& person : persons) writer.measure(person);
  std::string text;
  writer.begin(text);
  for (const IKRPerson& person : persons) writer.append(person, text);
  return text;
}

KRResult<void> KRCSVWriter::write(const KRPersonList& persons, KRText path, const Options& options) {
  const std::string text = bytes(persons, options);
  KRFile::WriteOptions isPrivate;
  isPrivate.isPrivate = true;
  return KRFile::write(path, text, isPrivate);
}
