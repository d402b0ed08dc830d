#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "contacts/model/KRProperty.h"
#include "platform/KRString.h"

/// What a column of a delimited file feeds: a property, or a part of one. It has a name, by which people choose it:
/// "phone", "firstName", "address.city", "phone.label", "ignore".
struct KRCSVTarget {
  enum class Part : uint8_t {
    /// The column is not read.
    Ignored,
    /// The whole value; of the name the whole name, of an address its street or the address as one text.
    Whole,
    // Of the name:
    First,
    Middle,
    Last,
    // Of an address, in the order of `KRAddressField`:
    PostOfficeBox,
    Extended,
    Street,
    City,
    Region,
    PostalCode,
    Country,
    CountryCode,
    // Of a date:
    Year,
    Month,
    Day,
    // Of an entry of a multiple value:
    Label,
    Service,
    /// Whether it is the main entry.
    Main,
    /// A whole value that says nothing when it is what the exporter writes by itself ("Normal", "Unspecified").
    Default,
  };

  KROrdinal property = KROrdinal::Other;
  Part part = Part::Whole;

  bool isIgnored() const noexcept { return part == Part::Ignored; }
  /// Valid as long as the process.
  KRString name() const noexcept;
  /// The target of that name, in any case of ASCII letters; nothing when there is none.
  static std::optional<KRCSVTarget> named(KRText name);
  /// The names that a host may use, in the order in which they are shown.
  static KRStringList names();

  friend bool operator==(const KRCSVTarget&, const KRCSVTarget&) = default;
};
