#pragma once

#include <memory>

#include "contacts/model/IKRPerson.h"

/// The persons of one finding. A long list loses persons one at a time without being copied each time: a phone number
/// that a hundred thousand contacts share is one finding, and each of them may be deleted by a fix of its own.
///
/// `get` and `set` are atomic; what else there is, is for the one thread that fixes.
class KRFindingPersons {
 public:
  KRPersonArray get() const;
  void set(KRPersonArray persons);
  /// As `get`, without counting: valid until the persons change. For the one thread that makes or fixes findings.
  const KRPersonArray& borrow() const;

  /// The persons as far as they are at hand, without any work: for wishes to the processor.
  const KRPersonArray& atHand() const noexcept { return array_; }
  /// Asks the processor for the only person, or for the list of several. Says and changes nothing.
  void prefetch() const noexcept { array_.prefetch(); }

  size_t count() const noexcept { return left_ ? left_->count() : array_.count(); }
  /// Whether a person equal to that one is listed. In a long list one step.
  bool contains(const IKRPerson* person) const;
  /// Takes the person out, wherever it stands. In a long list one step.
  void remove(const IKRPerson* person);

 private:
  static constexpr size_t kLong = 32;
  bool isLong() const;

  /// Empty, although there are persons, while `left_` has changed and nobody has asked since.
  mutable KRPersonArray array_;
  /// For a long list that was looked into: what is left of it.
  mutable std::unique_ptr<KRPersonList> left_;
};
