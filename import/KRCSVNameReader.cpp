#include "import/KRCSVNameReader.h"

#include <string>

#include "contacts/model/KRObjectPersonName.h"

namespace {

/// What stands in the columns, joined by spaces; nothing when nothing does.
KRString joined(const KRCSVCells& cells, const std::vector<size_t>& columns) {
  KRString joined;
  for (const size_t column : columns) {
    if (!cells.has(column)) continue;
    joined = joined.isNothing() ? cells.text(column) : krConcat({joined, " ", cells.text(column)});
  }
  return joined;
}

KRString part(std::string_view text) {
  text = krCSVTrimmed(text);
  return text.empty() ? KRString() : KRString::trusted(text);
}

/// First and middle names, the first one up to a space.
void splitGiven(std::string_view given, KRCSVNameReader::Parts& parts) {
  given = krCSVTrimmed(given);
  const size_t space = given.find(' ');
  parts.first = part(given.substr(0, space));
  if (space != std::string_view::npos) parts.middle = part(given.substr(space));
}

/// Whether every word of a whole name stands in another value of the person, so that it need not be kept.
bool isTold(std::string_view whole, const KRTempPerson& person) {
  KRHold hold;
  const KRNameView name = person.readName(hold);
  std::string told;
  for (const KRText text : {name.first, name.middle, name.last, person.readText(KROrdinal::Title, hold),
                            person.readText(KROrdinal::Suffix, hold), person.readText(KROrdinal::Nickname, hold),
                            person.readText(KROrdinal::Company, hold)}) {
    told += krCSVSpacedWords(text.view());
  }
  return krCSVHoldsWords(told, whole);
}

}  // namespace

KRCSVNameReader::Parts KRCSVNameReader::split(std::string_view whole) const {
  Parts parts;
  whole = krCSVTrimmed(whole);
  const size_t comma = whole.find(',');
  if (comma != std::string_view::npos && comma != 0 && comma + 1 < whole.size()) {
    parts.last = part(whole.substr(0, comma));
    splitGiven(whole.substr(comma + 1), parts);
    return parts;
  }
  const size_t before = whole.find(' ');
  if (before == std::string_view::npos) {
    parts.first = part(whole);
    return parts;
  }
  if (isLastNameFirst_) {
    parts.last = part(whole.substr(0, before));
    splitGiven(whole.substr(before), parts);
    return parts;
  }
  const size_t behind = whole.rfind(' ');
  parts.first = part(whole.substr(0, before));
  parts.last = part(whole.substr(behind));
  if (behind > before) parts.middle = part(whole.substr(before, behind - before));
  return parts;
}

void KRCSVNameReader::read(const KRCSVPlan::Name& columns, const KRCSVCells& cells, const KRCSVSingles& singles,
                           KRTempPerson& person, KRCSVRemainder& remainder) const {
  Parts parts{joined(cells, columns.first), joined(cells, columns.middle), joined(cells, columns.last)};
  bool hasParts = !parts.first.isNothing() || !parts.middle.isNothing() || !parts.last.isNothing();
  bool isCompany = false;
  size_t used = KRCSVCells::kNone;
  KRHold hold;
  for (const size_t column : columns.whole) {
    if (hasParts || !cells.has(column)) continue;
    used = column;
    // A row that is named as its company is a company.
    isCompany = krCSVTrimmed(cells.view(column)) == krCSVTrimmed(person.readText(KROrdinal::Company, hold).view());
    if (!isCompany) parts = split(cells.text(column).view());
    hasParts = true;
  }
  if (isCompany) {
    person.setIsOrganization(true);
  } else if (hasParts) {
    singles.set(person, KROrdinal::Name, krMake<KRObjectPersonName>(parts.first, parts.middle, parts.last));
  }
  for (const size_t column : columns.whole) {
    if (column != used && cells.has(column) && !isTold(cells.view(column), person)) {
      remainder.keepCell(cells, column);
    }
  }
}
