#pragma once

#include "contacts/model/KRMutableMultipleValue.h"
#include "contacts/model/KRMutableSingleValue.h"
#include "contacts/model/KRReading.h"
#include "contacts/model/KRStoredValue.h"

// The reading interface over a stored value that somebody keeps: what a person answers for a property whose stored
// value it holds. The views are valid as long as the stored value is neither changed nor dropped; texts that must be
// made (of dates) are kept in the hold. A stored value of the wrong kind, or nothing, reads as nothing.

/// The text, or a date's text form.
KRText krReadText(const KRStoredValue* stored, KRHold& hold);
/// `isPresent` only with a name object.
KRNameView krReadName(const KRStoredValue* stored);
/// The entries of a multiple value, or the elements of a list of texts (of which an element that is not text is handed
/// out by its text form).
void krReadEntries(const KRStoredValue* stored, KRHold& hold, KREntryVisitor visitor);
size_t krEntryCount(const KRStoredValue* stored);
/// All fields and the code as views.
KRAddressView krAddressView(const KRObjectAddress& address);
