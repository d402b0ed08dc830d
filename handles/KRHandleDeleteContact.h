#pragma once

#include "handles/KRIssueHandle.h"

/// Moves the first contact of a finding from its own book to the trash. Saves neither and reports no progress.
///
/// The book is the one that the shared `KRAddressBookManager` has under the contact's `addressBookID`, on purpose not
/// the scanned one: a host that opens a book by itself adds it to the manager. A contact of a book that the manager
/// does not know goes to the trash and stays where it is as well.
class KRHandleDeleteContact : public KRIssueHandle {
 public:
  void fix(KRIssueObject* issueObject) override;
  void fix(KRIssueObject* issueObject, const KRFlagProgress& progress) override;
  KRString title(KRIssueObject* issueObject) const override;
  KRString resultInfo(KRIssueObject* issueObject) const override;
};
