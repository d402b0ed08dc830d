#pragma once

#include <string>

#include "contacts/model/IKRPerson.h"

/// How a contact is called in front of people: the name shown for it (of an organisation its company), escaped; for one
/// without any, something by which its owner will know it, "(no name, +49 30 123456)".
std::string personText(const IKRPerson& person);
