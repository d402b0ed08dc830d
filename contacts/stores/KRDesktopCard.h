#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "contacts/model/ABPerson.h"
#include "contacts/stores/KRDesktopLine.h"

/// A card of the desktop's address book service: a contact or a contact list.
struct KRDesktopCard {
  /// The card as this library keeps it: without what the service notes for itself, and with the picture in it that the
  /// service keeps in a file of its own, as that file goes with the contact.
  std::string text;
  /// The identifier by which the service knows it.
  std::string UID;
  bool isList = false;
  /// A number that changes with what the card says.
  int64_t stamp = 0;
};

/// Reads cards of the service, one after the other; not locked.
class KRDesktopCardReader {
 public:
  KRDesktopCard read(std::string_view card);

 private:
  KRVCardLines lines_;
};

/// The card to be sent for a person: version 3.0, which is the only one that the service keeps. Lines that the model
/// does not know are in it; `UID` is its identifier, none when that is empty.
std::string krCardForDesktop(const ABPerson& person, KRText UID);

/// The card with the other one's time of change: a service may refuse a change of a card that names another revision
/// than it has.
std::string krWithRevisionOf(std::string_view card, std::string_view other);
