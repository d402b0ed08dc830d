#pragma once

#include "app/JsonWriter.h"
#include "app/Terminal.h"
#include "contacts/KRAddressBookManager.h"

/// Address books as people and programs read about them.
namespace BooksDocument {

/// `{"books": [...]}`, in the manager's order.
void writeAll(Output& out, KRAddressBookManager& manager);
/// One book, with its groups.
void writeOne(Output& out, KRAddressBook& book, bool isDefault);

/// Name, count, identifier, kind and place of one book, or why it cannot be opened.
void print(Terminal& terminal, KRAddressBook& book, bool isDefault);
/// The groups of the book, if there are any, with the numbers of their contacts.
void printGroups(Terminal& terminal, KRAddressBook& book);

}  // namespace BooksDocument
