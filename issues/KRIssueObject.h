#pragma once

#include "contacts/model/IKRPerson.h"
#include "issues/KRFindingPersons.h"
#include "platform/KRAtomic.h"
#include "platform/KRCellPool.h"
#include "platform/KRGraphNode.h"
#include "platform/KRPrefetch.h"
#include "platform/KRString.h"
#include "platform/KRValue.h"

class KRIssue;
class KRIssueContext;
class KRIssueHandle;

/// A finding: one problem, the persons whom it concerns, the value that it is about, a sentence for the user, and the
/// fix chosen for it. Compared by identity.
///
/// A finding that somebody keeps reaches its context, the result and the scanned address book; when the last reference
/// from outside to any of them goes, all of them go. Accessors are atomic.
class KRIssueObject : public KRGraphNode {
 public:
  KRIssueObject();
  ~KRIssueObject() override;

  // A find makes more findings than there are contacts, and a fix goes through all of them.
  static void* operator new(size_t size) { return KRCells<KRIssueObject>::take(size); }
  static void operator delete(void* room, size_t size) noexcept { KRCells<KRIssueObject>::give(room, size); }

  /// The value that the finding is about, as the detector chose it; may be nothing.
  KRValue info() const { return info_.get(); }
  void setInfo(KRValue info) { info_.set(std::move(info)); }

  /// The sentence that explains the finding to the user.
  KRString describe() const { return describe_.get(); }
  void setDescribe(KRString describe) { describe_.set(std::move(describe)); }

  /// The persons concerned, never none in a finding of a detector. The first is the main person: the finding is sorted
  /// by it.
  KRPersonArray persons() const { return persons_.get(); }
  void setPersons(KRPersonArray persons) { persons_.set(std::move(persons)); }

  /// The same without counting: valid until the persons change. For the thread that makes or fixes findings.
  const KRPersonArray& borrowPersons() const { return persons_.borrow(); }

  /// The fix chosen for this finding, or nothing.
  KRRef<KRIssueHandle> handle() const;
  void setHandle(KRRef<KRIssueHandle> handle);

  /// The context that the finding was last added to, or nothing. It stays when the finding is removed.
  KRRef<KRIssueContext> context() const;
  void setContext(KRIssueContext* context);
  /// The same as `context`.
  KRRef<KRIssueContext> issueContext() const;
  /// The context's issue; nothing without a context.
  KRRef<KRIssue> issue() const;

  /// Passes this finding to its handle's `fix`; without a handle nothing happens. Runs on the caller's thread.
  void fix();

  /// Replaces `persons` by a list that lacks the person, wherever it stood in it (written form: `removePerson:`). A
  /// person that the finding does not list changes nothing.
  void removePerson(const IKRPerson* person);
  /// How many persons there are, and whether that one is among them, by the persons' own equality. Long lists are not
  /// copied for it, nor by `removePerson` as long as nobody asks for `persons` in between. For the thread that fixes.
  size_t personCount() const noexcept { return persons_.count(); }
  /// Asks the processor for the memory that reading the persons takes. Says and changes nothing.
  void prefetch() const noexcept { krPrefetch(&persons_); }
  /// The same for all that taking the finding out takes: first the finding, and some steps later what it refers to.
  void prefetchWhole() const noexcept;
  void prefetchParts() const noexcept;
  const KRPersonArray& personsAtHand() const noexcept { return persons_.atHand(); }
  bool listsPerson(const IKRPerson* person) const { return persons_.contains(person); }

 private:
  KRAtomic<KRValue> info_;
  KRAtomic<KRString> describe_;
  KRFindingPersons persons_;
  KRAtomic<KRRef<KRIssueHandle>> handle_;
  KREdge<KRIssueContext> context_;
};
