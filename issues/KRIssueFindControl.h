#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "contacts/model/IKRPerson.h"
#include "contacts/model/KRAddressBook.h"
#include "issues/KRIssue.h"
#include "issues/KRIssueFind.h"
#include "issues/KRIssueFindControlDelegate.h"
#include "issues/KRIssueFindResult.h"
#include "platform/KRAtomic.h"
#include "platform/KRObject.h"
#include "platform/KRValue.h"

/// Runs a find: scans all persons of an address book for every issue that the issue manager uses, on a thread of its
/// own, and hands the result to the listener.
///
/// A control may be used for one run after the other; runs started at the same time are independent. The listener is
/// held until it is replaced, so a host that owns the control and is its own listener makes a cycle: it sets the
/// listener to nothing when it is done. There is nothing to wait on but the end notification. Accessors are atomic; the
/// address book must not change while a run reads it.
class KRIssueFindControl : public KRObject {
 public:
  using Delegate = KRIssueFindControlDelegate;

  /// A control for the book, without issues and persons; nothing without a book (written form: `initWithAddressBook:`).
  static KRRef<KRIssueFindControl> initWithAddressBook(KRRef<KRAddressBook> addressBook);
  /// A control with a copy of the list, empty when there is none, and no book (written form: `initWithIssues:`).
  static KRRef<KRIssueFindControl> initWithIssues(const KRIssueList* issues);
  /// A control with copies of both lists and no book (written form: `initWithIssues:persons:`). A run scans the used
  /// issues and the book's persons, whatever stands in these lists: without a book it scans no persons. Kept so on
  /// purpose.
  static KRRef<KRIssueFindControl> initWithIssues(const KRIssueList* issues, const KRPersonList* persons);
  ~KRIssueFindControl() override;

  std::shared_ptr<Delegate> delegate() const { return delegate_.get(); }
  void setDelegate(std::shared_ptr<Delegate> delegate) {
    delegate_.set(std::move(delegate));
    delegateChanges_.fetch_add(1, std::memory_order_release);
  }

  /// Kept for the host; a run does not look at it. Nothing for a control made for a book.
  std::shared_ptr<KRIssueList> issueArray() const { return issueArray_.get(); }
  void setIssueArray(std::shared_ptr<KRIssueList> issueArray) { issueArray_.set(std::move(issueArray)); }

  /// Kept for the host; a run does not look at it. Nothing for a control made for a book.
  std::shared_ptr<KRPersonList> personArray() const { return personArray_.get(); }
  void setPersonArray(std::shared_ptr<KRPersonList> personArray) { personArray_.set(std::move(personArray)); }

  /// The book whose persons a run scans.
  KRRef<KRAddressBook> addressBook() const { return addressBook_.get(); }
  void setAddressBook(KRRef<KRAddressBook> addressBook) { addressBook_.set(std::move(addressBook)); }

  /// Starts a run on a new detached thread and returns at once. The thread keeps the control alive. False only when the
  /// system gives no thread: then nothing runs and the listener hears nothing.
  bool startFind();
  /// Does nothing: a run always goes on to its end notification. Kept as an empty operation on purpose.
  void stop() {}
  /// The run itself, on the calling thread; the argument is ignored (written form: `findThreed:`).
  void findThreed(const KRValue& ignored = {});

  /// Call the listener, if there is one (written forms: `sendFinding:`, `sendEnd:`).
  void sendStart();
  void sendFinding(double progress);
  void sendEnd(const KRRef<KRIssueFindResult>& result);

 protected:
  /// A control without lists and book, for a host's own class.
  KRIssueFindControl() = default;
  template <class T, class... Arguments>
  friend KRRef<T> krMake(Arguments&&...);

  /// The detector that a run asks for each issue; nothing when the issue has none. A host with detectors of its own
  /// adds them here. Called on the run's thread.
  virtual KRRef<KRIssueFind> detectorForIssue(KRIssue* issue);

 private:
  class Listener;

  KRAtomic<std::shared_ptr<Delegate>> delegate_;
  /// A run asks for the listener anew only when this has changed: it calls it once for each person and issue.
  std::atomic<uint32_t> delegateChanges_{0};
  KRAtomic<std::shared_ptr<KRIssueList>> issueArray_;
  KRAtomic<std::shared_ptr<KRPersonList>> personArray_;
  KRAtomic<KRRef<KRAddressBook>> addressBook_;
};
