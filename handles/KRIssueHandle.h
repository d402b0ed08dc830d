#pragma once

#include "contacts/model/IKRPerson.h"
#include "handles/KRHandleNames.h"
#include "platform/KRAtomic.h"
#include "platform/KRObject.h"
#include "platform/KRProgress.h"
#include "platform/KRString.h"
#include "platform/KRValue.h"

class KRIssueObject;

/// A fix: what the user can have done about a finding. The base of all fixes, and itself the fix that changes no
/// contact and only takes the finding out of the result (Edit, Ignore).
///
/// One handle serves every finding that it is set on; it keeps no state between fixes. Fixes run on the caller's
/// thread, one at a time; meanwhile nobody else changes the result or the address book. `info` is atomic.
class KRIssueHandle : public KRObject {
 public:
  KRIssueHandle() = default;

  /// A new handle of the class that the name stands for, with the name and `info` set (written form:
  /// `issueHandleWithName:info:`). Any other name, or nothing, makes a plain handle that bears it. Never nothing.
  static KRRef<KRIssueHandle> issueHandleWithName(const KRString& name, KRValue info = {});

  /// The name that the handle was made with; may be nothing.
  virtual KRString name() const { return name_; }
  /// Whether the user has to assist the fix. No fix needs it, so it is always false.
  bool needAssist() const noexcept { return false; }
  /// Whether a fix of this name deletes persons of the finding: `resetFindResult` then goes through all their findings.
  bool deletesPersons() const;
  /// What the maker of the handle gave along, or nothing.
  KRValue info() const { return info_.get(); }
  void setInfo(KRValue info) { info_.set(std::move(info)); }

  /// Applies the fix to the finding and brings the find result up to date (written form: `fix:`). Afterwards the
  /// finding is in its context no more.
  ///
  /// A merge puts one new person, `indirectFix`, into the scanned book, moves all persons of the finding to the trash,
  /// and saves the book, then the trash. No other fix saves anything.
  virtual void fix(KRIssueObject* finding);
  /// The same with progress (written form: `fix:progress:`): a fix that changes contacts calls the callback, if there
  /// is one, exactly once with 1 and 100.0, after the change and before it brings the result up to date. The base only
  /// does the latter.
  virtual void fix(KRIssueObject* finding, const KRFlagProgress& progress);
  /// The person that a merge makes of the finding's persons (written form: `indirectFix:`): a new one of the scanned
  /// book with all standard properties of theirs by the rules below, each line of their cards that the model does not
  /// know (`krJoinedCard`), and in all of their groups where the book can change groups. Nothing for any other fix, and
  /// without a book. The finding's persons stay as they are.
  virtual KRRef<IKRPerson> indirectFix(KRIssueObject* finding);

  /// The merged value of a property of single values (written form: `mergeSingleValue:personArray:`): that of the first
  /// person who has one, even an empty one, as that very object. Tags are joined instead: those of the first person,
  /// then of each further person those that are new, in a value without a label. Nothing when no person has a value.
  KRRef<KRStoredValue> mergeSingleValue(const KRProperty* property, const KRPersonArray& personArray) const;
  /// The merged value of a property of multiple values (written form: `mergeMultipleValue:personArray:`): every
  /// distinct entry of the persons once, in their order; of entries that count as the same the first is kept, with its
  /// label. The entries are shared, the list is new. Nothing when there is no entry. Linear in the number of entries.
  KRRef<KRMutableMultipleValue> mergeMultipleValue(const KRProperty* property, const KRPersonArray& personArray) const;
  /// Whether the multiple value holds an entry whose value counts as the same as that of `hasValue` (written form:
  /// `isMulitipleValue:hasValue:property:`). Phones and e-mails go by their text, character for character; addresses by
  /// `isequalToAddress`; accounts by the very same service and the user name; all else by `isEqual`.
  bool isMulitipleValue(const KRMutableMultipleValue* multipleValue, const KRMutableSingleValue* hasValue,
                        const KRProperty* property) const;

  /// Brings the find result up to date after this fix (written form: `resetFindResult:`): findings that list a person
  /// whom the fix deleted, which the name of the finding's handle tells (this one's, when none is set), lose that
  /// person, or go when fewer than three persons were listed; then the finding itself goes. A finding without a person
  /// is a programming error when a person was to be deleted (`KRFatal`).
  void resetFindResult(KRIssueObject* finding);
  /// Takes one finding out of the index, out of its context, and an emptied context out of the result (written form:
  /// `removeObject:`).
  void removeObject(KRIssueObject* finding);

  /// The person address key: the decimal text of where the person object stands in memory (written form: `personAd:`).
  /// Good while the person lives; never stored.
  static KRString personAd(const IKRPerson* person);

  /// The short text of the action, such as "Merge" (written form: `title:`); the name for a name that has none.
  virtual KRString title(KRIssueObject* finding) const;
  /// The sentence that explains what the fix will do (written form: `resultInfo:`); "" where there is none.
  virtual KRString resultInfo(KRIssueObject* finding) const;

 private:
  KRString name_;
  KRAtomic<KRValue> info_;
};
