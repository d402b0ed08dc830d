#pragma once

#include "platform/KRString.h"

/// The identifier of the trash address book, which is also what every temporary person names as its book.
inline constexpr KRString KRTrashAddressBookID = "trash_addressbook"_kr;
