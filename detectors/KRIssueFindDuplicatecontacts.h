#pragma once

#include "issues/KRIssueFind.h"

/// Finds contacts of the same name: persons by the parts of the name that the shared `KRIssueConfig` chooses,
/// organisations by their company's name. Compared exactly: "Ann" and "ann" are two names. A finding lists a group of
/// two or more contacts in the order of the list; groups stand in the order in which their first contacts come.
///
/// A contact without any of the parts takes no part; one whose parts are there and empty shares its name with others
/// like it.
class KRIssueFindDuplicatecontacts : public KRIssueFind {
 public:
  /// The setting is read once, when a run starts. The progress is reported before each person, from 0.
  KRRef<KRIssueContext> find(const KRPersonList* persons, const KRProgress& progress) override;

  /// The same by comparing each contact with every other one (written form: `find2:progress:`); quadratic, not called
  /// by `find`. The progress is the share of contacts that are done with; a person that stands in the list twice makes
  /// no group with itself here.
  KRRef<KRIssueContext> find2(const KRPersonList* persons, const KRProgress& progress) const;

  /// The text whose equality makes the same name: "organization:" and the company's name, or the parts of the name,
  /// each behind "first:", "middle:" or "lasst:" (written form: `keyNameForPerson:`). Reads the shared setting. Nothing
  /// for an organisation without a name and a person without a name value; "" when no part qualifies.
  KRString keyNameForPerson(const IKRPerson* person) const;

  /// A new finding about the persons (written form: `objectForPerson:`; takes the whole group in spite of its name).
  KRRef<KRIssueObject> objectForPerson(const KRPersonArray& persons) const;
};
