#pragma once

#include <optional>

#include "contacts/model/IKRPerson.h"
#include "issues/KRIssue.h"
#include "issues/KRIssueObject.h"
#include "platform/KRAtomic.h"
#include "platform/KRGraphNode.h"
#include "platform/KRList.h"
#include "platform/KRProgress.h"

class KRIssueFindResult;
class KRSortNames;
class KRIssueHandle;

/// The findings of one issue type. Compared by identity.
///
/// Fields are atomic, lists are not locked: a context is built by one thread and then belongs to one other.
class KRIssueContext : public KRGraphNode {
 public:
  /// A context without findings (written form: `initWithIssue:`).
  explicit KRIssueContext(KRRef<KRIssue> issue);
  ~KRIssueContext() override;

  KRRef<KRIssue> issue() const;
  void setIssue(KRRef<KRIssue> issue);

  /// The result that holds the context, or nothing. It stays when the context is removed.
  KRRef<KRIssueFindResult> result() const;
  void setResult(KRIssueFindResult* result);
  /// The same as `result`.
  KRRef<KRIssueFindResult> issueFindResult() const;

  /// The findings: the live list, valid while the context lives.
  KRList<KRIssueObject>& objects() noexcept { return objects_; }
  const KRList<KRIssueObject>& objects() const noexcept { return objects_; }
  /// Replaces the content of the list. The `context` of the findings stays as it is.
  void setObjects(const KRList<KRIssueObject>& objects);
  /// The same list as `objects`.
  KRList<KRIssueObject>& issueObjects() noexcept { return objects_; }

  /// Appends the finding, also one that is there already, and makes this its `context` (written form:
  /// `addIssueObject:`). Nothing is ignored.
  void addIssueObject(KRIssueObject* object);
  /// Removes the finding, if the list holds it; its `context` stays (written form: `removeIssueObject:`).
  void removeIssueObject(KRIssueObject* object);

  /// The persons of all findings, each once, in the order of first appearance; a person listed twice inside one finding
  /// stays twice. Worked out on the first call and kept from then on, on purpose: what is added or removed later does
  /// not show.
  KRPersonArray allPersons();

  /// The `info` of every finding that has one, in the order of the findings, repeats included. Worked out on each call.
  std::vector<KRValue> allInfo() const;

  /// Chooses the handle for every finding, if it is one of the very handle objects that the issue offers; else nothing
  /// happens (written form: `setHandleToAllObject:`).
  void setHandleToAllObject(KRIssueHandle* handle);

  /// Fixes each finding while walking the live list. A list that changes under the walk stops the process (`KRFatal`);
  /// since handles take their finding out of the list, that happens as soon as there are two. Kept so on purpose; hosts
  /// use `fixAllForProgress`.
  void fixAll();

  /// Fixes the finding at the front until none is left, and reports the share that is gone after each, in percent
  /// (written form: `fixAllForProgress:`). The callback is required; without findings it is not called. It relies on
  /// every fix taking its finding out of the list: a finding without a handle makes it run for ever.
  void fixAllForProgress(const KRProgress& progress);

  /// Orders the findings by the name of their first person: its `nameChineesPinyin`, else its `displayName`, else "",
  /// compared without regard to case. Equal names keep their order. A finding without persons is a programming error
  /// (`KRFatal`).
  void sort();
  /// The same, unless a first person is no record (`ABPerson`); then nothing happens and the answer is false. Records
  /// may be read by several threads at once; what persons of other classes can take nobody knows.
  bool sortRecords();

 private:
  void reorder(KRSortNames& names);
  void prefetchFixes(const KRIssueFindResult* result, bool deletesPersons) const noexcept;

  KRAtomic<KRRef<KRIssue>> issue_;
  KRList<KRIssueObject> objects_{*this};
  KREdge<KRIssueFindResult> result_;
  KRAtomic<std::optional<KRPersonArray>> allArray_;
};
