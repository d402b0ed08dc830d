#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// A contact that a contact list of the desktop names.
struct KRDesktopMember {
  std::string UID;
  /// As shown, and an e-mail address or none.
  std::string name;
  std::string email;
};

/// A contact list of the desktop: a card that names its members.
struct KRDesktopList {
  std::string name;
  /// The identifiers of the members that are contacts, each once, in the card's order.
  std::vector<std::string> members;
};

KRDesktopList krReadDesktopList(std::string_view card);

/// The card of a new list; `UID` must be without line breaks.
std::string krNewDesktopList(std::string_view UID, std::string_view name, const std::vector<KRDesktopMember>& members);

/// The card with these members: lines of members that stay are kept as they are, and so are those of members for which
/// `isOurs` is false, such as plain addresses and contacts of other books.
std::string krChangedDesktopList(std::string_view card, const std::vector<KRDesktopMember>& members,
                                 const std::function<bool(const std::string& UID)>& isOurs);
