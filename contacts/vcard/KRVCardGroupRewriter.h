#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "contacts/model/ABPerson.h"
#include "contacts/vcard/KRVCardGroup.h"
#include "contacts/vcard/KRVCardRewriter.h"
#include "contacts/vcard/KRVCardVersion.h"
#include "contacts/vcard/KRVCardWriter.h"

/// What is to change in the card of a group.
struct KRVCardGroupChange {
  /// Becomes the card's identifier where it has none; nothing leaves it without.
  KRString UID{};
  /// The members that go, without "urn:uuid:" before them. All others stay, also those that nobody knows.
  std::unordered_set<KRString> dropped{};
  /// The identifiers of those that come, in the order in which they are to stand.
  KRStringList added{};
};

/// Writes the card of a group again and touches nothing but the lines of members that come and go: new ones stand
/// behind the last one that is there, in the card's version and line ends. Version 4.0 calls them MEMBER, the older
/// ones have the names that address books agreed upon.
///
/// `charset` is that of the bytes outside of lines that name one. No state; any thread.
class KRVCardGroupRewriter {
 public:
  /// The edits of a group's card, in order; none when nothing changes.
  static std::vector<KRVCardEdit> edits(std::string_view card, const KRVCardGroupChange& change,
                                        std::string_view charset = "UTF-8");
  /// The edits that give a card of any kind an identifier; none for a card that has one.
  static std::vector<KRVCardEdit> identifyingEdits(std::string_view card, KRText UID,
                                                   std::string_view charset = "UTF-8");
  /// A new card for a group, from BEGIN to END with its line end.
  static std::string card(const KRVCardGroup& group, KRVCardVersion version, const KRVCardLineStyle& style = {});
  /// The card of a group, as the reader hands it out, written in a version: its name, its identifier, what else of it
  /// the contact model shows, and its members.
  static std::string card(const ABPerson& group, KRVCardVersion version);
};
