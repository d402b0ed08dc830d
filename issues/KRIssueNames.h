#pragma once

#include "platform/KRString.h"

// The names of the issue types. The value is what is compared, kept in preferences and written into documents, so it
// never changes.

/// A plain phrase, unlike all the others, which equal their constants: preferences hold it so.
inline constexpr KRString KRIssueDuplicateInfo = "Duplicate Info"_kr;
inline constexpr KRString KRIssueDuplicateNames = "KRIssueDuplicateNames"_kr;
inline constexpr KRString KRIssueIncompleteName = "KRIssueIncompleteName"_kr;
inline constexpr KRString KRIssueInvalidCharacters = "KRIssueInvalidCharacters"_kr;
inline constexpr KRString KRIssueDuplicateAddress = "KRIssueDuplicateAddress"_kr;
inline constexpr KRString KRIssueDuplicatePhoneNumber = "KRIssueDuplicatePhoneNumber"_kr;
inline constexpr KRString KRIssueDuplicateEmailAddress = "KRIssueDuplicateEmailAddress"_kr;
inline constexpr KRString KRIssueNoteWithSpacingOnly = "KRIssueNoteWithSpacingOnly"_kr;
inline constexpr KRString KRIssueUnusualTitle = "KRIssueUnusualTitle"_kr;
inline constexpr KRString KRIssueUnusualSuffix = "KRIssueUnusualSuffix"_kr;
inline constexpr KRString KRIssueSpacingInTheFirstName = "KRIssueSpacingInTheFirstName"_kr;
/// Has a detector but no place in the catalogue, on purpose: it is scanned for only by a host that makes the issue.
inline constexpr KRString KRIssueNicknameWithSpacingOnly = "KRIssueNicknameWithSpacingOnly"_kr;
inline constexpr KRString KRIssueBlankName = "KRIssueBlankName"_kr;
inline constexpr KRString KRIssueEmailsDuplicatedAmongMultipleContacts =
    "KRIssueEmailsDuplicatedAmongMultipleContacts"_kr;
inline constexpr KRString KRIssuePhonesDuplicatedAmongMultipleContacts =
    "KRIssuePhonesDuplicatedAmongMultipleContacts"_kr;
inline constexpr KRString KRIssueHasCompanyNameNoTitle = "KRIssueHasCompanyNameNoTitle"_kr;
