#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "platform/KRText.h"

/// Why something in a vCard file was passed over.
enum class KRVCardReason : uint8_t {
  /// The card has no end: another card begins, or the file ends.
  CutOff,
  /// Lines outside of any card.
  Junk,
  /// A line of a card without a colon.
  NoColon,
  /// A birthday or another date that is none.
  BadDate,
  /// A picture that is not in base64 although it says so.
  BadPhoto,
  /// The card is larger than this library holds.
  TooLarge,
};

/// One thing that a reader passed over.
struct KRVCardNote {
  KRVCardReason reason;
  /// Number of the line, from 1.
  size_t line;
  /// Number of the card in the file, from 1; for lines between cards that of the card before them.
  size_t card;
  /// Whether a whole card was lost.
  bool isCardLost;

  /// A sentence without a full stop, in English, that does not repeat line and card.
  KRText sentence() const noexcept;
};

/// Receives notes while a file is read, in the file's order. May be absent. Does not throw.
using KRVCardNoteSink = std::function<void(const KRVCardNote&)>;
