#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "contacts/KRNameCache.h"
#include "contacts/KRTrashAddressBookID.h"
#include "contacts/model/IKRPerson.h"
#include "platform/KRAtomic.h"

class KRKeyedUnarchiver;

/// A person held in memory apart from any address book: what an import makes of a row, and what the trash keeps on
/// disk. It answers the person protocol like any other person and can be archived.
///
/// Values are kept under their property's name as the very objects that were set. Setting nothing never clears a value:
/// it is ignored, on purpose, by every operation of this class.
///
/// Threads: `fromID` and `groupIDs` are atomic; the values and the tags are not protected.
class KRTempPerson : public IKRPerson {
 public:
  /// A person with the identifier "123", which all persons made this way share on purpose (written form: `init`).
  KRTempPerson();
  /// Written form: `initWithID:`. No values and no tags.
  explicit KRTempPerson(KRString ID);

  /// `ID` of the book that the person came from, and the identifiers of the groups that it belonged to there; nothing
  /// until set.
  KRString fromID() const { return fromID_.get(); }
  void setFromID(KRString fromID) { fromID_.set(std::move(fromID)); }
  std::optional<KRStringList> groupIDs() const { return groupIDs_.get(); }
  void setGroupIDs(std::optional<KRStringList> groupIDs) { groupIDs_.set(std::move(groupIDs)); }

  /// The card that the person was read from, as it was read, or nothing: it has the lines that no property shows, so
  /// that a person that comes back from the trash has lost nothing. Values that were set since are not in it.
  KRRef<KRData> card() const { return card_; }
  void setCard(KRRef<KRData> card) { card_ = std::move(card); }

  /// Makes room for the values of so many standard properties, for those who know how many they will set.
  void reserveValues(size_t count) { standard_.reserve(count); }

  KRString ID() const override { return ID_; }
  /// Always `KRTrashAddressBookID`, wherever the person came from.
  KRString addressBookID() const override { return KRTrashAddressBookID; }
  KRString displayName() const override;

  KRRef<KRStoredValue> valueByPropertyName(const KRString& name) const override;
  /// Replaces the value under the name; does nothing when value or name is nothing. A changed name, company or
  /// organisation flag drops the cached `nameChineesPinyin`.
  void setValue(KRRef<KRStoredValue> value, const KRString& byPropertyName) override;
  void setValue(KRRef<KRStoredValue> value, const KRProperty* byProperty) override;
  void setRecordValue(KRValue value, const KRString& forProperty) override;
  void setThumbnail(KRRef<KRData> thumbnail) override;

  KRRef<KRObjectPhone> mainPhone() const override;
  KRRef<KRObjectEmail> mainEmail() const override;
  /// The properties that hold a value, in standard order; values under names that are no property are left out.
  std::vector<const KRProperty*> notNullValueProperty() const override;

  /// The tag list, which is apart from the value under `KRProPertyTags` and is not archived.
  KRStringList tagArray() const override { return tags_; }
  /// The same list itself, to be changed in place.
  KRStringList& liveTagArray() { return tags_; }
  /// Appends the tag only when the list contains it already. The inverted test is kept on purpose: archives and callers
  /// rely on tags that come through `setTags` and the tags property alone.
  void addTag(const KRString& tag) override;
  /// Removes the tag wherever it stands in the list.
  void removeTag(const KRString& tag) override;
  /// Removes the given tags from the list, then appends them all: tags that are not given stay.
  void setTags(const KRStringList& tags) override;

  /// The Latin transliteration of `displayName`, respectively `showName`, from the shared cache. A change of name drops
  /// only the first from the cache: the second keeps what it answered first, on purpose.
  KRString nameChineesPinyin() const override;
  KRString showNameChineesPinyin() const override;

  /// The cache of transliterated names, one for the process: of `displayName` under the person's `ID`, of `showName`
  /// under `companyNameSaveID`. Persons with the same identifier share both.
  static KRNameCache& dictionaryPinyinSave();
  void removeDisplayNameCache();
  /// Written form: `transformChinese:`. Latin letters, without marks, upper case; nothing for nothing.
  static KRString transformChinese(const KRString& text);
  /// "company_" and the `ID`.
  KRString companyNameSaveID() const;

  /// The main entry of a multiple value, borrowed, or nothing (written form: `mainValueForProPertyName:`).
  KRMutableSingleValue* mainValueForProPertyName(const KRString& name) const;
  /// The value of that entry; nothing for an entry whose own type is that of a multiple value (written form:
  /// `valueOfMainValueForProPertyName:`).
  KRValue valueOfMainValueForProPertyName(const KRString& name) const;
  /// A new single value with a label named after the property, and its type (written form:
  /// `singleValueByMacValue:property:`). Nothing for a value of nothing.
  static KRRef<KRMutableSingleValue> singleValueByMacValue(KRValue value, const KRProperty* property);
  /// Written form: `singleValueByMacValue:label:type:`.
  static KRRef<KRMutableSingleValue> singleValueByMacValue(KRValue value, KRRef<KRLabel> label, int32_t type);

  KRText readText(KROrdinal property, KRHold& hold) const override;
  KRNameView readName(KRHold& hold) const override;
  void readEntries(KROrdinal property, KRHold& hold, KREntryVisitor visitor) const override;
  size_t entryCount(KROrdinal property) const override;
  KRText readCompanyName(KRHold& hold) const override { return readText(KROrdinal::Company, hold); }

  KRText archiveClassName() const override;
  void encodeWithCoder(KRKeyedArchiver& coder) const override;
  /// A person read back: "" as identifier when the archive has none (written form: `initWithCoder:`).
  static KRRef<KRObject> decode(KRKeyedUnarchiver& coder);

 private:
  void setStandard(KRRef<KRStoredValue> value, KROrdinal property);
  KRStoredValue* stored(KROrdinal property) const noexcept;
  KRStoredValue* stored(const KRString& name) const noexcept;
  /// Where the value of a standard property stands, or belongs, in `standard_`.
  size_t placeOf(KROrdinal property) const noexcept;
  KRString cachedPinyin(const KRString& key, const KRString& name) const;

  KRString ID_;
  // The values of standard properties in standard order, a bit in `present_` for each; others by name.
  uint32_t present_ = 0;
  std::vector<KRRef<KRStoredValue>> standard_;
  std::vector<std::pair<KRString, KRRef<KRStoredValue>>> further_;
  KRStringList tags_;
  KRRef<KRData> card_;
  KRAtomic<KRString> fromID_;
  KRAtomic<std::optional<KRStringList>> groupIDs_;
};
