#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "app/FixChoice.h"

/// Fixes that are still to be applied: what `krcontacts plan` writes and `krcontacts apply` reads, a document that a
/// person or a program may edit in between (docs/plan.schema.json).
struct Plan {
  struct Person {
    std::string ID;
    /// `krPersonDigest` when the plan was made.
    std::string digest;
  };
  struct Fix {
    FixChoice choice;
    /// The text form of the finding's `info`, "" for none; nothing where the plan leaves it open.
    std::optional<std::string> info;
    /// The contacts that the fix is about, the main one first: all of the finding, or some.
    std::vector<Person> persons;
    /// New values of the main contact by the names of properties; null when there are none.
    nlohmann::json values;
    /// Where it stands in the document, and what it is, for messages: "/fixes/3 (blank-name, Ann)".
    std::string place;
  };

  std::string bookID;
  /// Where the book is kept, for one that is not in the user's list; "" when that is not known.
  std::string bookPath;
  std::vector<Fix> fixes;

  /// Reads the file ("-" is standard input). Throws `Unusable` with the file, the place in it and the reason when it
  /// cannot be read or is no plan.
  static Plan read(const std::string& file);
};
