#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/undo/KRUndoRecorder.h"
#include "platform/KRString.h"

/// What was done to cards of a book of the desktop, contacts and contact lists alike, as an undo record has it.
struct KRUndoCards {
  struct Card {
    std::string UID;
    /// The whole card before, as `KRDesktopCard::text` has it; empty when there was none.
    std::string before{};
    /// The mark of the card after; nothing when there is none.
    std::optional<uint64_t> after{};

    /// The mark of the card before; nothing when there was none.
    std::optional<uint64_t> markBefore() const;
  };

  /// The book as this library names it in every process, its name, and where the service keeps it.
  KRString ID{};
  KRString name{};
  KRString place{};
  std::vector<Card> cards{};

  /// What people call the book: "Personal (On This Computer)".
  std::string called() const;
  /// Names a card among all things that can be undone.
  std::string keyOf(const Card& card) const;
  std::vector<KRUndoChange> changes() const;
  std::string fields() const;
  static std::optional<KRUndoCards> read(std::string_view fields);

  /// A mark of what a card says (`KRDesktopCard::text`, or a card that is to be sent), the same in every process. It
  /// leaves out what the service sets of itself with every change, the time of change above all, and the identifier;
  /// lines of different names may change places, and of pictures only the picture counts.
  static uint64_t markOf(std::string_view card);
};
