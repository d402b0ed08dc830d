#pragma once

#include "platform/KRString.h"

// The names of the fixes. The value is what is compared and written into documents, so it never changes; odd spellings
// are part of it.

inline constexpr KRString KRHandleNameDeleteDuplicatePerson = "KRHandleNameDeleteDuplicatePerson"_kr;
inline constexpr KRString KRHandleNameDeleteDublicatProperty = "KRHandleNameDeleteDublicatProperty"_kr;
inline constexpr KRString KRHandleNameDeleteProperty = "KRHandleNameDeleteProperty"_kr;
inline constexpr KRString KRHandleNameAddSupport = "KRHandleNameAddSupport"_kr;
inline constexpr KRString KRHandleNameDeleteContact = "KRHandleNameDeleteContact"_kr;
inline constexpr KRString KRHandleNameRemoveSpace = "KRHandleNameRemoveSpace"_kr;
inline constexpr KRString KRHandleNameUseDefaultString = "KRHandleNameUseDefaultString"_kr;
inline constexpr KRString KRHandleNameEdit = "KRHandleNameEdit"_kr;
inline constexpr KRString KRHandleNameMergeContact = "KRHandleNameMergeContact"_kr;
inline constexpr KRString KRHandleNameIgnore = "KRHandleNameIgnore"_kr;
