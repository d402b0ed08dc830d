#pragma once

#include <string>
#include <vector>

#include "app/PersonRows.h"

/// Contacts side by side: a row for each value, a cell for each contact, with what differs told.
struct ContactColumns {
  enum class Mark {
    /// The same in all contacts, or there is only one.
    None,
    /// Not the same in all contacts.
    Differs,
    /// A value that a contact has twice.
    Repeated,
  };
  struct Row {
    std::string heading;
    /// "home: 020 7946 0000"; empty where a contact lacks the value. As many as there are contacts. Escaped.
    std::vector<std::string> cells;
    Mark mark = Mark::None;
  };

  /// Equal values of several contacts stand in one row, whatever their labels; a property of one value in each contact
  /// has one row. Properties in the order of the contacts' own.
  static std::vector<Row> of(const std::vector<std::vector<PersonRow>>& contacts);
};
