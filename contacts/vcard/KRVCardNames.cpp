#include "contacts/vcard/KRVCardNames.h"

#include <algorithm>

namespace {

using O = KROrdinal;

struct TextName {
  KROrdinal property;
  const char* name;
};
constexpr TextName kTextNames[] = {
    {O::PhoneticFirstName, "X-PHONETIC-FIRST-NAME"},
    {O::PhoneticMiddleName, "X-PHONETIC-MIDDLE-NAME"},
    {O::PhoneticLastName, "X-PHONETIC-LAST-NAME"},
    {O::Nickname, "NICKNAME"},
    {O::JobTitle, "TITLE"},
    {O::Role, "ROLE"},
    {O::Note, "NOTE"},
};

/// The types that programs know on the lines of a property, by version; every other label is written out.
struct Types {
  KROrdinal property;
  std::string_view before40;
  std::string_view from40;
};
constexpr Types kTypes[] = {
    {O::Phone, " home work cell fax voice pager msg bbs modem car isdn video pcs ",
     " home work cell fax voice pager text video textphone "},
    {O::Email, " home work ", " home work "},
    {O::Address, " home work ", " home work "},
    {O::InstantMessage, " home work ", " home work "},
    {O::URL, " home work ", " home work "},
    {O::RelatedName, "",
     " contact acquaintance friend met co-worker colleague co-resident neighbor child parent sibling spouse kin muse "
     "crush date sweetheart me agent emergency "},
};

/// Labels that the desktop's own book translates: it marks them as built in.
constexpr std::string_view kBuiltIn[] = {
    "Home",   "Work",     "Other",       "Mobile",   "Main",    "HomeFAX", "WorkFAX",  "OtherFAX", "Pager",
    "School", "HomePage", "Anniversary", "Spouse",   "Partner", "Father",  "Mother",   "Parent",   "Brother",
    "Sister", "Child",    "Son",         "Daughter", "Friend",  "Manager", "Assistant"};

/// The lines that version 2.1 has for some services.
struct ServiceName {
  std::string_view service;
  const char* name;
};
constexpr ServiceName kServices21[] = {
    {"aim", "X-AIM"},     {"icq", "X-ICQ"},
    {"xmpp", "X-JABBER"}, {"msnim", "X-MSN"},
    {"ymsgr", "X-YAHOO"}, {"skype", "X-SKYPE"},
    {"gtalk", "X-GTALK"}, {"gadu-gadu", "X-GADUGADU"},
    {"qq", "X-QQ"},       {"groupwise", "X-GROUPWISE"},
};

struct PictureKind {
  std::string_view start;
  std::string_view name;
};
constexpr PictureKind kPictures[] = {
    {"\xFF\xD8\xFF", "jpeg"}, {"\x89PNG", "png"}, {"GIF8", "gif"}, {"BM", "bmp"}, {"RIFF", "webp"},
};

}  // namespace

std::string krTextLineName(KROrdinal property) {
  const auto* found = std::find_if(std::begin(kTextNames), std::end(kTextNames),
                                   [&](const TextName& each) { return each.property == property; });
  return found != std::end(kTextNames) ? found->name : "X-KR-TEXT";
}

std::string_view krKnownTypes(KROrdinal property, KRVCardVersion version) noexcept {
  const auto* known =
      std::find_if(std::begin(kTypes), std::end(kTypes), [&](const Types& each) { return each.property == property; });
  if (known == std::end(kTypes)) return {};
  return version == KRVCardVersion::V40 ? known->from40 : known->before40;
}

bool krIsBuiltInLabel(std::string_view label) noexcept {
  return std::find(std::begin(kBuiltIn), std::end(kBuiltIn), label) != std::end(kBuiltIn);
}

std::string krServiceLineName21(std::string_view service) {
  const auto* found = std::find_if(std::begin(kServices21), std::end(kServices21),
                                   [&](const ServiceName& each) { return each.service == service; });
  return found != std::end(kServices21) ? found->name : "";
}

std::string_view krPictureKind(std::string_view bytes) noexcept {
  const auto* kind = std::find_if(std::begin(kPictures), std::end(kPictures),
                                  [&](const PictureKind& each) { return bytes.starts_with(each.start); });
  return kind != std::end(kPictures) ? kind->name : std::string_view();
}
