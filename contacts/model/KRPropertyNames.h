#pragma once

#include "platform/KRString.h"

// The names by which properties are addressed. A name is also the key of the property in keyed archives and in the
// documents that the host prints, so it never changes.

inline constexpr KRString KRProPertyName = "name"_kr;
inline constexpr KRString KRProPertyNickname = "nickname"_kr;
inline constexpr KRString KRProPertyTitle = "title"_kr;
inline constexpr KRString KRProPertySuffix = "suffix"_kr;
inline constexpr KRString KRProPertyCompany = "company"_kr;
inline constexpr KRString KRProPertyJobTitle = "jobTitle"_kr;
inline constexpr KRString KRProPertyIsOrganization = "isOrganization"_kr;
inline constexpr KRString KRProPertyNote = "note"_kr;
inline constexpr KRString KRProPertyBirthday = "birthday"_kr;
inline constexpr KRString KRProPertyTags = "tags"_kr;
inline constexpr KRString KRProPertyThumbnail = "thumbnail"_kr;
inline constexpr KRString KRProPertyPhone = "phone"_kr;
inline constexpr KRString KRProPertyEmail = "email"_kr;
inline constexpr KRString KRProPertyAddress = "address"_kr;
inline constexpr KRString KRProPertyInstantMessage = "instantMessage"_kr;
inline constexpr KRString KRProPertyOther = "other"_kr;

// What cards hold beyond those that the engine names: part of the standard properties too, so that two contacts count
// as exact duplicates only when everything shown of them is equal.
inline constexpr KRString KRProPertyPhoneticFirstName = "phoneticFirstName"_kr;
inline constexpr KRString KRProPertyPhoneticMiddleName = "phoneticMiddleName"_kr;
inline constexpr KRString KRProPertyPhoneticLastName = "phoneticLastName"_kr;
inline constexpr KRString KRProPertyDepartment = "department"_kr;
inline constexpr KRString KRProPertyRole = "role"_kr;
inline constexpr KRString KRProPertyURL = "url"_kr;
inline constexpr KRString KRProPertyOtherDate = "otherDate"_kr;
inline constexpr KRString KRProPertyRelatedName = "relatedName"_kr;
inline constexpr KRString KRProPertySocialProfile = "socialProfile"_kr;

// The keys of the system record interface.
inline constexpr KRString kABFirstNameProperty = "firstName"_kr;
inline constexpr KRString kABMiddleNameProperty = "middleName"_kr;
inline constexpr KRString kABLastNameProperty = "lastName"_kr;
inline constexpr KRString kABNicknameProperty = "nickname"_kr;
inline constexpr KRString kABNoteProperty = "note"_kr;
inline constexpr KRString kABTitleProperty = "title"_kr;
inline constexpr KRString kABSuffixProperty = "suffix"_kr;
inline constexpr KRString kABPhoneProperty = "phone"_kr;
inline constexpr KRString kABEmailProperty = "email"_kr;
inline constexpr KRString kABAddressProperty = "address"_kr;
