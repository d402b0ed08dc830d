#pragma once

#include "issues/KRIssueFind.h"

class KRMutableMultipleValue;

/// Finds contacts that are the same in everything: every standard property with its labels and the order of its values,
/// the image, and whether they are organisations. A finding lists a group of two or more in the order of the list;
/// groups stand in the order in which their second contacts come.
///
/// Contacts of equal keys are compared once more by the bytes of their images, which the keys hold only digests of.
class KRIssueFindDuplicateInfo : public KRIssueFind {
 public:
  /// Calls `find3`.
  KRRef<KRIssueContext> find(const KRPersonList* persons, const KRProgress& progress) override;

  /// Groups by the text of everything that a contact holds; linear (written form: `find3:progress:`). The progress is
  /// reported before each person, from 0.
  KRRef<KRIssueContext> find3(const KRPersonList* persons, const KRProgress& progress) const;

  /// Compares each contact with every other one by `person` (written form: `find2:progress:`); quadratic, not called by
  /// `find`. The first contact of a group stands last in its finding, and groups in the order of their first contacts.
  /// The progress is reported after each comparison and each contact, from there on up to 100.
  KRRef<KRIssueContext> find2(const KRPersonList* persons, const KRProgress& progress) const;

  /// The text of everything that the person holds, with the image's digest (written form: `personKey:`).
  KRString personKey(const IKRPerson* person) const;
  /// The MD5 digest in lower-case hexadecimal; nothing for no data (written form: `HashValueByData:`).
  KRString HashValueByData(const KRData* data) const;

  // The text of one value of a property, as it stands in the key; nothing for no value.

  /// Written form: `valueString:property:`.
  KRString valueString(const KRStoredValue* value, const KRProperty& property) const;
  /// Written form: `singValueString:property:`.
  KRString singValueString(const KRMutableSingleValue* value, const KRProperty& property) const;
  /// Written form: `mulitipleValueString:property:`.
  KRString mulitipleValueString(const KRMutableMultipleValue* value, const KRProperty& property) const;
  /// The text of one entry (written form: `mulitipleSubValueString:property:`).
  KRString mulitipleSubValueString(const KRMutableSingleValue* value, const KRProperty& property) const;

  // Equality by the kinds of the values, which `find2` uses. False when either side is nothing.

  /// Written form: `person:isEqualToPerson:`. Both hold the same properties, and all values are equal.
  bool person(const IKRPerson* person, const IKRPerson* isEqualToPerson) const;
  /// Written form: `value:isEqualToValue:property:`.
  bool value(const KRStoredValue* value, const KRStoredValue* isEqualToValue, const KRProperty& property) const;
  /// Written form: `singValue:isEqualToValue:property:`. Texts that are both absent are not equal.
  bool singValue(const KRMutableSingleValue* value, const KRMutableSingleValue* isEqualToValue,
                 const KRProperty& property) const;
  /// Written form: `mulitipleValue:isEqualToValue:property:`. The order of entries counts.
  bool mulitipleValue(const KRMutableMultipleValue* value, const KRMutableMultipleValue* isEqualToValue,
                      const KRProperty& property) const;
  /// Written form: `mulitipleSubValue:isEqualToValue:property:`. The labels' names count.
  bool mulitipleSubValue(const KRMutableSingleValue* value, const KRMutableSingleValue* isEqualToValue,
                         const KRProperty& property) const;

  /// A new finding about the persons (written form: `objectForPerson:`; takes the whole group in spite of its name).
  KRRef<KRIssueObject> objectForPerson(const KRPersonArray& persons) const;
};
