#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/model/KRCardRecord.h"
#include "contacts/vcard/KRVCardNote.h"

/// What stands in a stretch of a file that was read before it was known how all before it ends: what a reader finds
/// there if it begins outside of any card.
struct KRVCardStretch {
  /// A note, or the card of a group; it comes behind so many contacts.
  struct Other {
    size_t contacts;
    std::optional<KRVCardNote> note;
    KRCardRecord group;
  };

  // What was assumed.

  /// Where the stretch begins, and all bytes that the reader may look at; they stay while the stretch is in use.
  std::string_view text;
  /// How many of them a reader has by now, when it has read everything else.
  size_t known = 0;
  /// The character set guessed for the file before, or empty.
  std::string charset;

  // What was found. Lines and cards are counted from the beginning of the stretch.

  std::vector<KRCardRecord> contacts;
  std::vector<Other> others;
  /// Bytes, lines and cards that are done with.
  size_t size = 0;
  size_t lines = 0;
  size_t cards = 0;
  bool endsInJunk = false;
  std::string charsetAfter;
};
