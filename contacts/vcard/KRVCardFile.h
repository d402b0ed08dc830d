#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "contacts/model/ABPerson.h"
#include "contacts/vcard/KRVCardGroup.h"
#include "contacts/vcard/KRVCardGroupRewriter.h"
#include "contacts/vcard/KRVCardReader.h"
#include "contacts/vcard/KRVCardVersion.h"
#include "platform/KRResult.h"
#include "platform/KRTextDecoding.h"

/// A file of cards as a document: its bytes, and which of them are whose. It can be made anew with some cards changed,
/// gone or added and every other byte as it was: text between the cards, cards of groups, cards that were passed over,
/// the encoding and its mark.
///
/// Immutable, and as large as the file and its records together. Copied by value, moved cheaply. Any thread.
class KRVCardFile {
 public:
  struct Card {
    KRVCardPlace::Kind kind = KRVCardPlace::Kind::Contact;
    /// The card's bytes in the file.
    size_t offset = 0;
    size_t size = 0;
    /// Number of its first line, and of the card in the file, from 1.
    size_t line = 0;
    size_t number = 0;
    /// Why a lost card was passed over.
    KRVCardReason reason = KRVCardReason::CutOff;
    /// The contact; null for cards of other kinds.
    KRRef<ABPerson> person{};
  };

  /// An empty file.
  KRVCardFile() = default;
  /// Reads the bytes of a file; any bytes do.
  static KRVCardFile read(std::string bytes, const KRVCardNoteSink& notes = {});
  /// Reads a file. A failure is one of the file system's.
  static KRResult<KRVCardFile> open(KRText path, const KRVCardNoteSink& notes = {});

  /// All cards in the file's order: contacts, groups, and those that were lost.
  const std::vector<Card>& cards() const noexcept { return cards_; }
  std::string_view bytes() const noexcept { return bytes_; }
  /// The card's own bytes, in the file's encoding.
  std::string_view bytesOf(const Card& card) const noexcept { return bytes().substr(card.offset, card.size); }
  /// What the card of a group says.
  KRVCardGroup groupOf(const Card& card) const;

  size_t contactCount() const noexcept { return contactCount_; }
  KRTextEncoding encoding() const noexcept { return encoding_; }
  /// The character set of lines that are neither UTF-8 nor name one; "UTF-8" when there are none.
  const std::string& charset() const noexcept { return charset_; }
  /// The version of the last card that is a contact; 3.0 when there is none.
  KRVCardVersion version() const;

  struct Changes {
    /// A card by its place in `cards()`, and the contact that was read from it with other values now.
    std::vector<std::pair<size_t, const ABPerson*>> changed{};
    /// Cards of any kind by their places in `cards()`.
    std::vector<size_t> removed{};
    /// To stand behind the last card, in this order, in the file's version, line ends and encoding. Those that have a
    /// card and did not change keep it where the file's encoding allows.
    std::vector<const IKRPerson*> added{};
    /// The identifiers that contacts among the changed and the added ones get where their cards have none.
    std::unordered_map<const IKRPerson*, KRString> UIDs{};
    /// Cards of groups by their places in `cards()`, and what changes in them.
    std::vector<std::pair<size_t, KRVCardGroupChange>> groups{};
    /// To stand behind all others, in the same style.
    std::vector<KRVCardGroup> newGroups{};
  };
  /// The file after the changes. Its cards stand in the same order, without those that were removed and with those that
  /// were added behind them.
  ///
  /// `InvalidArgument` for a place that is none or named twice; `Changed` when a contact is not the one of that card;
  /// `Damaged` when the file could not be read back as meant, as when its text does not lead back to its bytes.
  KRResult<KRVCardFile> with(const Changes& changes) const;

 private:
  struct Edit;

  bool isWide() const noexcept { return encoding_ != KRTextEncoding::Utf8 && encoding_ != KRTextEncoding::Other; }
  /// The text that the places of cards and edits are about: the bytes, or for UTF-16 and UTF-32 the same as UTF-8.
  std::string_view text() const noexcept { return isWide() ? std::string_view(wideText_) : bytes(); }
  KRResult<void> gather(const Changes& changes, std::vector<Edit>& edits) const;
  std::string addedText(const Changes& changes) const;
  KRResult<std::string> applied(std::vector<Edit> edits) const;

  std::string bytes_;
  std::string wideText_;
  std::vector<Card> cards_;
  /// The places of the cards in `text()`.
  std::vector<std::pair<size_t, size_t>> places_;
  size_t contactCount_ = 0;
  KRTextEncoding encoding_ = KRTextEncoding::Utf8;
  std::string charset_ = "UTF-8";
  /// Whether each unit of a wide text stands for as many bytes as it should.
  bool isExact_ = true;
};
