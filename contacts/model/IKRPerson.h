#pragma once

#include <vector>

#include "contacts/model/KRGroup.h"
#include "contacts/model/KRMutableMultipleValue.h"
#include "contacts/model/KRMutableSingleValue.h"
#include "contacts/model/KRObjectEmail.h"
#include "contacts/model/KRObjectPhone.h"
#include "contacts/model/KRProperty.h"
#include "contacts/model/KRReading.h"
#include "contacts/model/KRRecordValue.h"
#include "contacts/model/KRStoredValue.h"
#include "platform/KRArray.h"
#include "platform/KRList.h"
#include "platform/KRObject.h"
#include "platform/KRValue.h"

/// A contact as the engine sees it: a person or an organisation of any address book.
///
/// A host's own kind of person implements the pure operations and inherits the rest, which is built on them. The
/// persons of this library override the reading interface as well, so that a scan makes no objects. Persons are
/// compared by identity.
///
/// Threads: reading is safe from any thread as long as nobody changes the person.
class IKRPerson : public KRObject {
 public:
  /// Identifier of the person, unique in its book.
  virtual KRString ID() const = 0;
  /// `ID` of the book that holds the person; nothing when none does.
  virtual KRString addressBookID() const = 0;
  /// The name shown for the person; "" when it has none.
  virtual KRString displayName() const = 0;

  /// The stored value of a property, or nothing (written form: `valueByPropertyName:`). For persons of this library it
  /// is the same object on every call until it is replaced.
  virtual KRRef<KRStoredValue> valueByPropertyName(const KRString& name) const = 0;
  /// Written form: `valueByProperty:`. Nothing for no property.
  virtual KRRef<KRStoredValue> valueByProperty(const KRProperty* property) const;

  /// Replaces the whole stored value of a property and keeps that very object (written form:
  /// `setValue:byPropertyName:`). What a value of nothing does is the class's own rule: a system record clears the
  /// property, a temporary person ignores it.
  virtual void setValue(KRRef<KRStoredValue> value, const KRString& byPropertyName) = 0;
  /// Written form: `setValue:byProperty:`. Clearing passes `KRRef<KRStoredValue>()`.
  virtual void setValue(KRRef<KRStoredValue> value, const KRProperty* byProperty);

  /// The image's bytes, or nothing.
  virtual KRRef<KRData> thumbnail() const;
  virtual void setThumbnail(KRRef<KRData> thumbnail);

  /// The value object of the main entry of phones, respectively e-mails, or nothing.
  virtual KRRef<KRObjectPhone> mainPhone() const;
  virtual KRRef<KRObjectEmail> mainEmail() const;

  /// Groups that the person belongs to.
  virtual std::vector<KRRef<KRGroup>> groups() const;
  /// The standard properties for which the person holds a value, in standard order (a temporary person's order is its
  /// own).
  virtual std::vector<const KRProperty*> notNullValueProperty() const;

  virtual KRStringList tagArray() const;
  virtual void addTag(const KRString& tag);
  virtual void removeTag(const KRString& tag);
  virtual void setTags(const KRStringList& tags);

  /// Whether the record is a company rather than a person: the value of `KRProPertyIsOrganization`, upper-cased, is
  /// "YES".
  virtual bool isOrganization() const;
  virtual void setIsOrganization(bool isOrganization);
  /// `displayName` for a person, `companyName` for an organisation.
  virtual KRString showName() const;
  /// "" when there is none.
  virtual KRString companyName() const;
  /// Nothing when there is none.
  virtual KRString jobTitle() const;

  /// Optional: the Latin transliteration of `displayName`, respectively `showName`, for sorting. Nothing for a person
  /// that does not offer it.
  virtual KRString nameChineesPinyin() const;
  virtual KRString showNameChineesPinyin() const;

  // Reading without making objects. Each answers exactly what the stored values hold; a property test holds both ways
  // together.

  /// The text of a single-valued property of text, or nothing. Also a birthday's text form.
  virtual KRText readText(KROrdinal property, KRHold& hold) const;
  virtual KRNameView readName(KRHold& hold) const;
  /// Hands out the entries of a multiple value in order, until the visitor answers false; the tags of a person likewise
  /// as texts. Does nothing when the person holds no such value.
  virtual void readEntries(KROrdinal property, KRHold& hold, KREntryVisitor visitor) const;
  /// The `text` of each of the same entries, for who wants nothing else.
  virtual void readTexts(KROrdinal property, KRHold& hold, KRTextVisitor visitor) const;
  /// Number of entries of a multiple value; 0 when there is none.
  virtual size_t entryCount(KROrdinal property) const;
  /// `companyName` as a view: nothing or empty when there is none.
  virtual KRText readCompanyName(KRHold& hold) const;
  /// Whether what these operations answer for the property is all that the person holds of it: there is no stored value
  /// yet, and one that is asked for says the same. False by default: a stored value may hold what no view shows, such
  /// as a multiple value without entries.
  virtual bool readsWhole(KROrdinal property) const;
  /// Asks the processor for the memory that reading takes, some persons before this one is read. Says and changes
  /// nothing; does nothing by default.
  virtual void prefetch() const noexcept {}
  /// Asks for what reading everything takes besides; when what `prefetch` asks for has come.
  virtual void prefetchRest() const noexcept {}
  /// The same for one property alone, in two steps with some persons between them: where its values stand, then the
  /// first value itself. A person that lacks the property asks for nothing.
  virtual void prefetchPlaces(KROrdinal /*property*/) const noexcept {}
  virtual void prefetchValue(KROrdinal /*property*/) const noexcept {}

  // The system record interface, answered by every person.

  /// Text, multi-value list or nothing for one of the `kAB...Property` keys or another property name of text, of dates
  /// or of multiple values; tags are a list of texts (written form: `valueForProperty:`). Nothing for the whole name
  /// and the image, which have operations of their own.
  KRRecordValue valueForProperty(const KRString& key) const;
  /// The generic key look-up; answers what `valueForProperty` does (written form: `valueForKey:`).
  KRRecordValue valueForKey(const KRString& key) const { return valueForProperty(key); }
  /// Sets a property through the record interface: text for text keys, a `KRMutableMultipleValue` for lists, nothing to
  /// clear, with the class's own rule for nothing (written form: `setValue:forProperty:`). A part of the name replaces
  /// the whole name by a new one; a value of a kind that the property does not hold is ignored.
  virtual void setRecordValue(KRValue value, const KRString& forProperty);
  /// The image's bytes as stored in the record, or nothing.
  virtual KRRef<KRData> imageData() const;
  /// The groups of the record that the person is a member of.
  virtual std::vector<KRRef<KRGroup>> parentGroups() const;

 protected:
  /// The single value under a name, or null; borrowed from `hold`.
  const KRMutableSingleValue* singleValue(const KRString& name, KRHold& hold) const;
};

/// A live list of persons.
using KRPersonList = KRList<IKRPerson>;
/// A fixed list of persons, as a value: the persons of a finding.
using KRPersonArray = KRArray<IKRPerson>;

/// A new single value of a property: its label is named after the property's `displayName`, its type is the property's
/// `valueType`. Nothing for a value of nothing.
KRRef<KRMutableSingleValue> krSingleValue(KRValue value, const KRProperty& property);
