#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "contacts/model/KRPropertyNames.h"
#include "platform/KRString.h"

/// The codes of value types; a stored value carries one, a property two. Codes beyond those that the engine tells apart
/// mark objects that are compared by general equality.
namespace KRValueType {
inline constexpr int32_t Text = 0;
inline constexpr int32_t Date = 3;
inline constexpr int32_t PersonName = 5;
inline constexpr int32_t Phone = 6;
inline constexpr int32_t Email = 7;
inline constexpr int32_t Address = 9;
inline constexpr int32_t TextList = 10;
inline constexpr int32_t Data = 11;
inline constexpr int32_t Multiple = 12;
inline constexpr int32_t InstantMessage = 13;
}  // namespace KRValueType

/// The place of a standard property in `KRProperty::StandardPropertyArray()`, from 0. Reading by ordinal needs no
/// look-up by name. Never stored: places may change between versions.
enum class KROrdinal : uint8_t {
  Name,
  PhoneticFirstName,
  PhoneticMiddleName,
  PhoneticLastName,
  Nickname,
  Phone,
  Email,
  Address,
  InstantMessage,
  Company,
  Department,
  JobTitle,
  Role,
  Title,
  Suffix,
  Birthday,
  URL,
  OtherDate,
  RelatedName,
  SocialProfile,
  Note,
  Tags,
  Thumbnail,
  IsOrganization,
  Other,
};
inline constexpr size_t kKROrdinalCount = static_cast<size_t>(KROrdinal::Other) + 1;

/// The descriptor of a property of contacts. Descriptors are made once and live as long as the process; they are
/// compared by address. Safe from any thread.
class KRProperty {
 public:
  KRProperty(const KRProperty&) = delete;
  KRProperty& operator=(const KRProperty&) = delete;

  /// All standard properties in their fixed order, which archiving, the key of exact duplicates, merging and the trash
  /// walk.
  static const std::vector<const KRProperty*>& StandardPropertyArray();

  /// The descriptor of a named property (written form: `propertyWithName:`), or nothing for a name that is none. One
  /// step, whatever the name.
  static const KRProperty* propertyWithName(KRText name);
  static const KRProperty* propertyWithOrdinal(KROrdinal ordinal);

  constexpr KRString name() const noexcept { return name_; }
  /// The name of the constant that holds `name`, such as "KRProPertyPhone".
  constexpr KRString constantName() const noexcept { return constantName_; }
  /// The name shown to the user, in the user's language; also the label of values that the engine makes.
  KRString displayName() const;
  constexpr int32_t valueType() const noexcept { return valueType_; }
  /// For a multiple value the type of each entry; for any other property 0.
  constexpr int32_t subValueType() const noexcept { return subValueType_; }
  constexpr bool isMultiple() const noexcept { return valueType_ == KRValueType::Multiple; }
  constexpr KROrdinal ordinal() const noexcept { return ordinal_; }

 private:
  friend struct KRPropertyTable;
  constexpr KRProperty(KROrdinal ordinal, KRString name, KRString constantName, int32_t valueType, int32_t subValueType)
      : name_(std::move(name)),
        constantName_(std::move(constantName)),
        valueType_(valueType),
        subValueType_(subValueType),
        ordinal_(ordinal) {}

  KRString name_;
  KRString constantName_;
  int32_t valueType_;
  int32_t subValueType_;
  KROrdinal ordinal_;
};
