#pragma once

#include <string>
#include <vector>

#include "contacts/model/ABPerson.h"
#include "contacts/vcard/KRVCardVersion.h"

/// What the cards of several records hold beyond the contact model, for the one person that is made of them: a record
/// whose card has these lines, each distinct one once, in the order of the persons and of their cards. It is in the
/// version of the first card. A record without a card when there are no such lines.
///
/// These are the lines of properties that the model does not know; pictures to be fetched from elsewhere, of all
/// persons; and further lines of a property of one text of which the first counts (a second NOTE), of the first person
/// who has that text, since a merge keeps that one's. Such further lines, and such pictures where somebody has a real
/// one, stand behind the line that counts: so the record may show a text of `KRVCardMeaning::FirstText` or a picture,
/// always that of the first person who has one, and nothing else. Other lines that the model knows are left out: they
/// would be read as values of the new person.
KRCardRecord krJoinedCard(const std::vector<const ABPerson*>& persons);

/// The lines of a record's card that no property shows, as a card of that version has them, without their groups: the
/// name in lower case, parameters, ":" or ";b:" (base64), and the value. Equal lines read alike. In the order of the
/// card; none for a record without one.
std::vector<std::string> krUnshownLines(const ABPerson& person, KRVCardVersion version);

/// The version of a record's card; 3.0 for a record without one.
KRVCardVersion krCardVersion(const ABPerson& person);
