#pragma once

#include <atomic>
#include <cstddef>
#include <string_view>
#include <vector>

#include "contacts/model/IKRPerson.h"
#include "contacts/model/KRCardRecord.h"

class KRAddressBook;

/// A record of an address book: what a card file, a database or the desktop's own book holds, read through the person
/// protocol and the record interface.
///
/// It is compact: a table of where each value stands in the card's own bytes. Stored values are made on the first
/// request and kept from then on; several threads may ask at once. A value set by `setValue` is kept as that very
/// object beside the card, which stays as it was, so that a store can tell what was changed and keep everything else
/// byte for byte; setting nothing clears the property.
class ABPerson : public IKRPerson {
 public:
  /// A new empty person with an identifier of its own.
  ABPerson();
  explicit ABPerson(KRCardRecord record) noexcept;
  ~ABPerson() override;

  // Walks over a book read every person: they lie close to each other, each in one line of the processor's cache.
  static void* operator new(size_t size);
  static void operator delete(void* room, size_t size) noexcept;

  /// The person of one card, from its UTF-8 text, or nothing when the text does not start with a whole card or the card
  /// is that of a group (written form: `initWithVCardRepresentation:`).
  static KRRef<ABPerson> initWithVCardRepresentation(KRText text);

  /// The keys of the record interface: one for every standard property, and those for the parts of the name.
  static const KRStringList& properties();

  // For stores.

  /// The card as it was read, and its rows. Not changed by `setValue`.
  const KRCardRecord& record() const noexcept { return record_; }
  std::string_view card() const noexcept { return record_.card(); }
  /// Replaces the card, as after a save, and forgets all values set beside the old one. The person keeps its identifier
  /// also where that was made from the old card's text.
  void setRecord(KRCardRecord record);
  /// Whether any property, respectively that one, was set or cleared since the card was read.
  bool isChanged() const noexcept;
  bool isChanged(KROrdinal property) const noexcept;

  /// The book that holds the person; the book sets it, and clears it when it lets the person go or dies.
  KRAddressBook* addressBook() const noexcept { return book_; }
  void setAddressBook(KRAddressBook* book) noexcept;
  void setParentGroups(std::vector<KRRef<KRGroup>> groups);

  /// The identifier without regard to other persons: one given by `setID`, else the card's UID, else one made from the
  /// card's text, the same in every process.
  KRString baseID() const;
  /// The identifier that was given beside the card, or nothing.
  KRString givenID() const;
  /// Gives the person another identifier, before it belongs to a book.
  void setID(const KRString& ID);
  /// Whether the book has made sure that `ID` is unique. A book does so for all its persons when one is first asked.
  bool isIDAssigned() const noexcept { return suffix_.load(std::memory_order_acquire) != 0; }
  /// Whether `ID` is the one that the card makes, the same wherever the card is read: neither given beside it nor with
  /// the number by which the book tells it from others. The book makes sure of its identifiers first.
  bool isIDOfCard() const;
  /// Sets which holder of its `baseID` the person is in its book, from 1; the second's `ID` ends in "-2". Called by the
  /// book's table of identifiers, which gives its own serial number too; 0 takes the
  /// place away.
  void setIDSuffix(uint32_t suffix, uint32_t serial = 0) const noexcept {
    serial_ = serial;
    suffix_.store(suffix, std::memory_order_release);
  }

  // The person protocol.

  KRString ID() const override;
  KRString addressBookID() const override;
  KRString displayName() const override;
  bool isOrganization() const override;
  using IKRPerson::setValue;
  KRRef<KRStoredValue> valueByPropertyName(const KRString& name) const override;
  void setValue(KRRef<KRStoredValue> value, const KRString& byPropertyName) override;
  std::vector<KRRef<KRGroup>> groups() const override;
  std::vector<const KRProperty*> notNullValueProperty() const override;
  KRString nameChineesPinyin() const override;
  KRString showNameChineesPinyin() const override;

  KRText readText(KROrdinal property, KRHold& hold) const override;
  KRNameView readName(KRHold& hold) const override;
  void readEntries(KROrdinal property, KRHold& hold, KREntryVisitor visitor) const override;
  void readTexts(KROrdinal property, KRHold& hold, KRTextVisitor visitor) const override;
  size_t entryCount(KROrdinal property) const override;
  KRText readCompanyName(KRHold& hold) const override { return readText(KROrdinal::Company, hold); }
  bool readsWhole(KROrdinal property) const override { return !isStored(property); }
  void prefetch() const noexcept override { record_.prefetch(); }
  void prefetchRest() const noexcept override { record_.prefetchCard(); }
  void prefetchPlaces(KROrdinal property) const noexcept override { record_.prefetchRow(property); }
  void prefetchValue(KROrdinal property) const noexcept override { record_.prefetchText(property); }

  KRRef<KRData> thumbnail() const override { return imageData(); }
  /// A picture that stands in the card is decoded on every call and not kept.
  KRRef<KRData> imageData() const override;
  std::vector<KRRef<KRGroup>> parentGroups() const override;

 private:
  struct Side;

  Side& side() const;
  /// Whether the property must be read from its stored value: one was set, cleared or handed out.
  bool isStored(KROrdinal property) const noexcept;
  /// Whether the card holds rows of a property that has entries.
  bool hasEntryRows(KROrdinal property) const noexcept;
  KRRef<KRStoredValue> makeValue(const KRProperty& property) const;

  KRCardRecord record_;
  KRAddressBook* book_ = nullptr;
  /// What most persons never need: values made or set, a given identifier, groups.
  mutable std::atomic<Side*> side_{nullptr};
  mutable std::atomic<uint32_t> suffix_{0};
  mutable uint32_t serial_ = 0;
};
