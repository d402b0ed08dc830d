#pragma once

#include <memory>
#include <vector>

#include "contacts/model/IKRPerson.h"
#include "contacts/model/KRAddressBook.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueObject.h"
#include "platform/KRAtomic.h"
#include "platform/KRGraphNode.h"
#include "platform/KRList.h"

class KRPersonIndex;

/// What one run found: the contexts, the address book that was scanned, and an index from each person to the findings
/// that list it.
///
/// The index goes by person address keys: the decimal text of where the person object stands in memory
/// (`KRIssueHandle::personAd`). Findings keep their persons alive, so a key is good while it is in the index.
/// Operations that take the person itself do the same without making the text.
///
/// Fields are atomic, lists and index are not locked: one thread at a time.
class KRIssueFindResult : public KRGraphNode {
 public:
  /// An empty result without an address book (written form: `init`).
  KRIssueFindResult();
  ~KRIssueFindResult() override;

  /// The address book that the run scanned; fixes create, delete and save persons through it.
  KRRef<KRAddressBook> addressBook() const;
  void setAddressBook(KRRef<KRAddressBook> addressBook);

  /// The contexts in the order in which they were added: the live list, valid while the result lives.
  KRList<KRIssueContext>& contexts() noexcept { return contexts_; }
  const KRList<KRIssueContext>& contexts() const noexcept { return contexts_; }
  /// Replaces the content of the list; index and links stay as they are.
  void setContexts(const KRList<KRIssueContext>& contexts);
  /// The same list as `contexts`.
  KRList<KRIssueContext>& contextArray() noexcept { return contexts_; }

  /// Appends the context, makes this its `result`, puts each of its findings into the index under each of its persons,
  /// and then sorts it (written form: `addContext:`). Nothing is ignored.
  void addContext(KRIssueContext* context);
  /// The same without sorting it, for the run, which leaves that to another thread.
  void addUnsortedContext(KRIssueContext* context);
  /// Inserts the context before `index`, at the end when that is greater than the count, and makes this its `result`
  /// (written form: `insertContext:atIndex:`). Unlike `addContext` it neither fills the index nor sorts; kept so on
  /// purpose, for hosts that do both themselves.
  void insertContext(KRIssueContext* context, size_t atIndex);
  /// Takes the context out of `contexts`; the index and its `result` stay as they are (written form: `removeContext:`).
  void removeContext(KRIssueContext* context);

  /// Adds the finding to the key's list, unless it is in it (written form: `addObject:forPersonAddress:`).
  void addObject(KRIssueObject* object, const KRString& forPersonAddress);
  void addObjectForPerson(KRIssueObject* object, const IKRPerson* person);

  /// Removes the finding from the key's list, and the key with its last finding (written form:
  /// `removeObject:byPersonAddress:`).
  void removeObject(KRIssueObject* object, const KRString& byPersonAddress);
  void removeObjectForPerson(KRIssueObject* object, const IKRPerson* person);

  /// The findings under the key (not the person, in spite of the name), in the order in which they were added: the live
  /// list, or nothing for a key that has none (written form: `issueObjectByPerson:`). Valid until the key's last
  /// finding is removed.
  KRList<KRIssueObject>* issueObjectByPerson(const KRString& personAddress);
  KRList<KRIssueObject>* issueObjectsOfPerson(const IKRPerson* person);
  /// A copy of that list, empty for a person without findings; spares making the live one.
  std::vector<KRRef<KRIssueObject>> copyOfIssueObjects(const IKRPerson* person);

  /// Ask the processor for where the findings of this finding's persons stand, and some steps later each for those.
  /// They say and change nothing.
  void prefetchPlaces(const KRIssueObject& object) const noexcept;
  void prefetchEntries(const KRIssueObject& object) const noexcept;
  void prefetchLinks(const KRIssueObject& object) const noexcept;
  void prefetchFindings(const KRIssueObject& object) const noexcept;

 private:
  KRAtomic<KRRef<KRAddressBook>> addressBook_;
  KRList<KRIssueContext> contexts_{*this};
  std::unique_ptr<KRPersonIndex> index_;
};
