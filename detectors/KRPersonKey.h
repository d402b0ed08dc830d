#pragma once

#include <string>

#include "contacts/model/IKRPerson.h"

// The text of everything that a person holds, by which exact duplicates are told: for each standard property with a
// value its name, a colon and the value's text. An absent text within a value is written "(null)". Each function writes
// to the end of `to`.

/// All standard properties in their order but the image, and ":OrgString##" for an organisation. With `digest`, text
/// that stands for the image, before that mark. Values that the person holds as objects are read from these, others
/// from its views, to the same text.
void krAppendPersonKey(std::string& to, const IKRPerson& person, KRText digest, KRHold& hold);

/// The first `size` bytes of the same text without a digest, the whole text where it has no more. Texts that differ in
/// them differ, and most do: they begin with the name.
void krAppendPersonKeyStart(std::string& to, const IKRPerson& person, size_t size, KRHold& hold);

/// One property: nothing when the person has no value of it.
void krAppendProperty(std::string& to, const IKRPerson& person, const KRProperty& property, KRHold& hold);

/// The text of a stored value of a property.
void krAppendValue(std::string& to, const KRStoredValue& value, const KRProperty& property);
/// The text of one entry of a multiple value.
void krAppendEntry(std::string& to, const KRMutableSingleValue& entry, const KRProperty& property);
