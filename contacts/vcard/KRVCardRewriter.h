#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/model/ABPerson.h"

/// A place in a card's bytes and what is to stand there.
struct KRVCardEdit {
  size_t offset = 0;
  size_t size = 0;
  std::string bytes{};
};

/// Writes the card of a record again after values of it were set or cleared, and touches nothing but the lines of those
/// values: all others, known to this library or not, keep their bytes, their folds and their order.
///
/// A line that is written anew keeps its place, its group, its parameters and the parts of its value that the model
/// does not show; it is in the card's own version, with the card's line ends. In a multiple value the lines of entries
/// that are still the same stay as they are; that of an entry that went goes, with what its group says of it; a new
/// entry stands behind the last line of its property or, when there is none, at the end of the card.
///
/// What the reader makes of the new card shows the same as the person, as far as cards can hold it (`KRVCardWriter`).
/// No state; any thread.
class KRVCardRewriter {
 public:
  /// `charset` is that of the bytes outside of lines that name one: "UTF-8", or what `KRVCardReader::legacyCharset`
  /// said. What it cannot hold is written as quoted-printable UTF-8.
  ///
  /// The edits are in order and do not overlap; none for a person that is not changed.
  static std::vector<KRVCardEdit> edits(const ABPerson& person, std::string_view charset = "UTF-8");

  /// The card with the edits applied; a new card of version 3.0 for a person without one.
  static std::string rewritten(const ABPerson& person, std::string_view charset = "UTF-8");

  /// The bytes with the edits applied.
  static std::string applied(std::string_view bytes, const std::vector<KRVCardEdit>& edits);
};
