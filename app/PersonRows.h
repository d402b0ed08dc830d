#pragma once

#include <string>
#include <vector>

#include "contacts/model/IKRPerson.h"

/// One value of a contact with what stands before it: the property's name and the value's label. Texts are as they
/// came: whoever shows them escapes them.
struct PersonRow {
  std::string heading;
  std::string label;
  std::string text;

  friend bool operator==(const PersonRow& a, const PersonRow& b) = default;
};

/// A contact value by value, in the order in which people read it.
namespace PersonRows {

/// What stands below the name on the contact's card, and last its ID.
std::vector<PersonRow> ofCard(const IKRPerson& person);
/// Every value, the parts of the name among them, and no ID: what two states of a contact are compared by. A picture is
/// told by its size alone.
std::vector<PersonRow> whole(const IKRPerson& person);

}  // namespace PersonRows
