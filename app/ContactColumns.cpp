#include "app/ContactColumns.h"

#include <algorithm>
#include <map>
#include <utility>

#include "app/DisplayText.h"

namespace {

using Contacts = std::vector<std::vector<PersonRow>>;
using Row = ContactColumns::Row;
using Mark = ContactColumns::Mark;

/// The headings of all contacts: one that a former contact lacks stands behind the one that it follows.
std::vector<std::string> headingsOf(const Contacts& contacts) {
  std::vector<std::string> headings;
  for (const auto& rows : contacts) {
    auto place = headings.begin();
    for (const PersonRow& row : rows) {
      auto found = std::find(headings.begin(), headings.end(), row.heading);
      if (found == headings.end()) found = headings.insert(place, row.heading);
      place = std::next(found);
    }
  }
  return headings;
}

std::string cellOf(const PersonRow& row) {
  const std::string text = shownText(row.text);
  return row.label.empty() ? text : shownText(row.label) + ": " + text;
}

/// The rows of one property.
class PropertyRows {
 public:
  PropertyRows(const Contacts& contacts, const std::string& heading) : contacts_(contacts), heading_(heading) {
    size_t most = 0;
    for (const auto& rows : contacts) {
      const auto count = std::count_if(rows.begin(), rows.end(), [&](const PersonRow& row) { return isMine(row); });
      most = std::max(most, static_cast<size_t>(count));
    }
    isSingle_ = most == 1;
    for (size_t contact = 0; contact < contacts.size(); ++contact) add(contact);
    for (Row& row : rows_) mark(row);
  }

  std::vector<Row> take() { return std::move(rows_); }

 private:
  bool isMine(const PersonRow& row) const { return row.heading == heading_; }

  void add(size_t contact) {
    std::map<std::string, size_t> times;
    for (const PersonRow& row : contacts_[contact]) {
      if (!isMine(row)) continue;
      const size_t time = times[row.text]++;
      Row& place = rowFor(isSingle_ ? std::string() : row.text, time);
      place.cells[contact] = cellOf(row);
      if (time > 0) place.mark = Mark::Repeated;
    }
  }

  Row& rowFor(const std::string& text, size_t time) {
    const auto [known, isNew] = places_.try_emplace({text, time}, rows_.size());
    if (isNew) rows_.push_back({heading_, std::vector<std::string>(contacts_.size()), Mark::None});
    return rows_[known->second];
  }

  static void mark(Row& row) {
    const bool isSame = std::all_of(row.cells.begin(), row.cells.end(),
                                    [&](const std::string& cell) { return cell == row.cells.front(); });
    if (!isSame) row.mark = Mark::Differs;
  }

  const Contacts& contacts_;
  const std::string& heading_;
  bool isSingle_ = false;
  std::map<std::pair<std::string, size_t>, size_t> places_;
  std::vector<Row> rows_;
};

}  // namespace

std::vector<Row> ContactColumns::of(const Contacts& contacts) {
  std::vector<Row> rows;
  for (const std::string& heading : headingsOf(contacts)) {
    for (Row& row : PropertyRows(contacts, heading).take()) rows.push_back(std::move(row));
  }
  return rows;
}
