#pragma once

#include <cstddef>

#include "app/Terminal.h"
#include "contacts/model/IKRPerson.h"

/// A contact as people read it: its name, then a line for each value, with the property's name and the value's label in
/// front.
namespace PersonCard {

/// Writes the card; `number` is the contact's place in its book, from 1, and `digits` how wide such numbers are.
void print(Terminal& terminal, const IKRPerson& person, size_t number, size_t digits);

}  // namespace PersonCard
