#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/model/IKRPerson.h"
#include "contacts/vcard/KRVCardLineWriter.h"
#include "contacts/vcard/KRVCardVersion.h"
#include "platform/KRText.h"

/// What an older line held that the contact model does not show, and that stays with the new one.
struct KRVCardRemainder {
  /// The group; empty for none.
  std::string group{};
  /// Parameters with their leading ";", none of them about what the composer writes itself.
  std::string parameters{};
  /// The parts of the value behind those that the model shows, escaped, each with its leading ";".
  std::string parts{};
  // For entries:
  /// The property's name, where another would say the same; empty for the usual one.
  std::string name{};
  /// The parameters that make the label, where it stays as it was.
  std::optional<std::string> types{};
  /// The parameters that give the rank, where it stays as it was.
  std::optional<std::string> ranks{};
  /// A line that stays in the group gives the label, respectively the country code.
  bool hasLabelLine = false;
  bool hasCodeLine = false;
};

/// Makes the lines of a card out of what a person shows, in one version of the format. One composer makes one card, as
/// it hands out the names of groups.
class KRVCardComposer {
 public:
  explicit KRVCardComposer(KRVCardVersion version) noexcept : version_(version) {}
  using Lines = std::vector<KRVCardNewLine>;

  /// Says that the card has a line for its one anniversary already.
  void takeAnniversary() noexcept { hasAnniversary_ = true; }
  /// Keeps a group's name from being handed out.
  void takeGroup(std::string_view name);

  /// The N line: name, prefixes and suffixes of the person.
  KRVCardNewLine name(const IKRPerson& person, const KRVCardRemainder& remainder = {}) const;
  /// The FN line. Its text never makes the reader see a name or a company that the person does not have.
  KRVCardNewLine formattedName(const IKRPerson& person, const KRVCardRemainder& remainder = {}) const;
  /// The ORG line: company and department.
  KRVCardNewLine organisation(const IKRPerson& person, const KRVCardRemainder& remainder = {}) const;
  /// The line that marks a company.
  KRVCardNewLine organisationMark() const;
  /// The line of a property of one text: phonetic names, nickname, job title, role, note.
  KRVCardNewLine text(KROrdinal property, KRText text, const KRVCardRemainder& remainder = {}) const;
  KRVCardNewLine birthday(KRText date, const KRVCardRemainder& remainder = {}) const;
  /// The CATEGORIES line; empty tags are left out.
  KRVCardNewLine tags(const std::vector<std::string>& tags, const KRVCardRemainder& remainder = {}) const;
  KRVCardNewLine photo(std::string_view bytes, const KRVCardRemainder& remainder = {}) const;
  KRVCardNewLine identifier(KRText UID) const;
  /// The lines of an entry of a multiple value: itself, and what its group says about it. None for an entry without a
  /// value.
  Lines entry(KROrdinal property, const KREntryView& entry, bool isMain, const KRVCardRemainder& remainder = {});
  /// The line that gives the label of a group.
  KRVCardNewLine groupLabel(const std::string& group, KRText label) const;

  /// Whether the person has any part of a name, a prefix or a suffix.
  static bool hasNameParts(const IKRPerson& person);
  /// Whether no line can hold the entry: it has no text, or an address no field.
  static bool isEmpty(KROrdinal property, const KREntryView& entry);
  /// The place of the entry of a multiple value that is marked as the main one, or nothing.
  static std::optional<size_t> mainEntry(const IKRPerson& person, KROrdinal property);

 private:
  KRVCardNewLine account(const KREntryView& entry) const;
  KRVCardNewLine address(const KRAddressView& address, const KRVCardRemainder& remainder) const;
  KRVCardNewLine dateEntry(const KREntryView& entry, const std::string& name, bool& labelIsWritten);
  KRVCardNewLine relation(const KREntryView& entry, const std::string& name) const;
  KRVCardNewLine unwrapped(const char* name, std::string_view scheme, KRText text) const;
  KRVCardNewLine value(KROrdinal property, const KREntryView& entry, const KRVCardRemainder& remainder,
                       bool& labelIsWritten);
  void setDate(KRText date, KRVCardNewLine& line) const;
  /// The parameters that make the reader see that label; false when none do.
  bool labelParameters(KROrdinal property, KRText label, std::string& parameters) const;
  std::string mainParameter() const;
  std::string freshGroup();

  KRVCardVersion version_;
  std::set<std::string> taken_;
  size_t lastGroup_ = 0;
  bool hasAnniversary_ = false;
};
