#pragma once

#include <memory>
#include <span>

#include "contacts/model/IKRPerson.h"

class KRAddressBook;

/// What a row of a record's table is about: one of the standard properties, or a part of one.
/// (`KRCardRow::what`; values below `kKROrdinalCount` are `KROrdinal`s.)
enum class KRCardPart : uint8_t {
  FirstName = kKROrdinalCount,
  MiddleName,
  LastName,
  /// The field `KRCardRow::detail` (`KRAddressField`) of the address whose row stands before it.
  AddressField,
  /// The country code given with the address whose row stands before it.
  AddressCountryCode,
  /// The card's own identifier.
  UID,
};

/// One row of a record's table: where the text of one value stands. Twelve bytes.
struct KRCardRow {
  /// The text stands in the record's block of decoded text, not in the card itself.
  static constexpr uint32_t kDecoded = 0x80000000U;

  /// `KROrdinal` or `KRCardPart`.
  uint8_t what;
  /// Field of an address, or for an account the number of its service; else 0.
  uint8_t detail;
  /// Number of the label's name in the table of labels (`KRLabelTable`); 0 for none.
  uint16_t label;
  /// Place of the first byte, with `kDecoded` in `size`.
  uint32_t offset;
  uint32_t size;
};

/// A record of an address book: what a card file, a database or the desktop's own book holds, read through the person
/// protocol and the record interface.
///
/// It is compact: the card's own bytes as they were read, a table of where each value stands, and decoded text only
/// where it differs from the card's bytes. Stored values are made on the first request and kept from then on. A value
/// set by `setValue` is kept as that very object beside the card, which stays as it was, so that a store can tell what
/// was changed and keep everything else byte for byte; setting nothing clears the property.
class ABPerson : public IKRPerson {
 public:
  ABPerson();
  ~ABPerson() override;

  /// A record of a card: `card` holds its bytes, rows of decoded text point into `decoded` (may be nothing). Rows of
  /// one property stand together, in the card's order.
  static KRRef<ABPerson> withCard(KRString card, KRString decoded, std::span<const KRCardRow> rows);

  /// The keys of the record interface: one for every standard property, and those for the parts of the name.
  static const KRStringList& properties();

  /// The card's own bytes, nothing for a record made in memory. Not changed by `setValue`.
  KRString card() const;

  KRString ID() const override;
  KRString addressBookID() const override;
  KRString displayName() const override;
  using IKRPerson::setValue;
  KRRef<KRStoredValue> valueByPropertyName(const KRString& name) const override;
  void setValue(KRRef<KRStoredValue> value, const KRString& byPropertyName) override;
};
