#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "contacts/vcard/KRCardDraft.h"
#include "contacts/vcard/KRVCardLines.h"

/// The labels of a card's entries, and which entry of each property is the main one.
///
/// A label comes from the parameters of the entry's line or, which counts more, from a line of its own in the same
/// group; that line may stand before or behind. The same way an address gets its country code.
class KRVCardLabels {
 public:
  using Place = KRCardDraft::Place;
  using Entry = KRCardDraft::Entry;

  /// Starts a card.
  void start();
  /// Notes an entry that was made of a line, with what the line says about its label, group and rank.
  void add(Entry entry, KROrdinal ordinal, const KRVCardLine& line, KRCardDraft& draft);
  /// Sets the label of an entry; an empty name changes nothing.
  void set(Entry entry, std::string_view name, KRCardDraft& draft);
  /// Notes a label, respectively a country code, for the entries of a group.
  void giveLabel(std::string_view group, const Place& name, KRCardDraft& draft);
  void giveCountryCode(std::string_view group, const Place& code, KRCardDraft& draft);
  /// Ends the card: writes labels, codes and marks into the draft.
  void finish(KRCardDraft& draft);

 private:
  struct Grouped {
    Place group;
    Entry entry;
  };
  struct Given {
    Place group;
    Place value;
    bool isLabel;
  };
  /// A label whose name has no number.
  struct TextLabel {
    Entry entry;
    Place name;
  };
  /// The entry of a property that is preferred so far, and how much.
  struct Main {
    uint8_t preference = 0;
    Entry entry = 0;
  };

  void apply(const Given& given, Entry entry, KRCardDraft& draft);
  void finishGroups(KRCardDraft& draft);
  void finishTexts(KRCardDraft& draft);

  std::vector<Grouped> grouped_;
  std::vector<Given> given_;
  std::vector<TextLabel> texts_;
  /// A bit for each property that has one, and that one.
  uint32_t ranked_ = 0;
  std::array<Main, kKROrdinalCount> main_;
};
