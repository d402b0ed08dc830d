#pragma once

#include <atomic>

#include "platform/KRAtomic.h"
#include "platform/KRList.h"
#include "platform/KRObject.h"
#include "platform/KRString.h"

class KRIssueHandle;

/// A kind of problem that can be found in a list of contacts, with the fixes that it offers.
///
/// Issues are compared by identity: every issue in use is one of the catalogue's own objects, and one made by a host is
/// never equal to it, even under the same name. Accessors are atomic; the list of handles is not locked.
class KRIssue : public KRObject {
 public:
  /// `displayName` stays nothing, there are no handles and `multiPerson` is false (written form:
  /// `initWithName:describe:`).
  KRIssue(KRString name, KRString describe);
  /// Written form: `initWithName:describe:displayName:`.
  KRIssue(KRString name, KRString describe, KRString displayName);
  ~KRIssue() override;

  /// One of the constants of `KRIssueNames.h`, or a host's own.
  KRString name() const { return name_.get(); }
  void setName(KRString name) { name_.set(std::move(name)); }

  /// Text that describes the issue to the user.
  KRString describe() const { return describe_.get(); }
  void setDescribe(KRString describe) { describe_.set(std::move(describe)); }

  /// The title; may be nothing.
  KRString displayName() const { return displayName_.get(); }
  void setDisplayName(KRString displayName) { displayName_.set(std::move(displayName)); }

  /// Whether one finding concerns several persons at once, as duplicates among contacts do.
  bool multiPerson() const noexcept { return multiPerson_.load(std::memory_order_relaxed); }
  void setMultiPerson(bool multiPerson) noexcept { multiPerson_.store(multiPerson, std::memory_order_relaxed); }

  /// The fixes in the order in which they are offered: the live list, valid while the issue lives.
  KRList<KRIssueHandle>& handles() noexcept { return handles_; }
  const KRList<KRIssueHandle>& handles() const noexcept { return handles_; }
  /// Replaces the content of the list.
  void setHandles(const KRList<KRIssueHandle>& handles);
  /// The same list as `handles`.
  KRList<KRIssueHandle>& handelArray() noexcept { return handles_; }
  /// Appends a handle, also one that is there already; nothing is ignored.
  void addHandle(KRIssueHandle* handle);

  /// The name.
  KRString description() const override { return name(); }

 private:
  KRAtomic<KRString> name_;
  KRAtomic<KRString> describe_;
  KRAtomic<KRString> displayName_;
  KRList<KRIssueHandle> handles_;
  std::atomic<bool> multiPerson_ = false;
};

/// A live list of issues.
using KRIssueList = KRList<KRIssue>;
