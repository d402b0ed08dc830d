#pragma once

#include <optional>
#include <vector>

#include "contacts/model/KRMutableSingleValue.h"

class KRKeyedUnarchiver;

/// An ordered list of labelled values of one property. Its type is always 12. Equal to a multiple value of equal
/// entries in the same order.
class KRMutableMultipleValue : public KRStoredValue {
 public:
  int32_t type() const override;
  size_t count() const { return entries_.size(); }

  /// The entry at `index`, from 0, borrowed; nothing when there is none (written form: `valueAtIndex:`).
  KRMutableSingleValue* valueAtIndex(size_t index) const;
  /// Appends the entry itself, not a copy; nothing is ignored (written form: `addValue:`).
  void addValue(KRRef<KRMutableSingleValue> value);
  /// Removes one entry, later entries move down; an index out of range changes nothing (written form:
  /// `removeValueAtIndex:`).
  void removeValueAtIndex(size_t index);

  /// The main entry: the one marked as preferred, else the first; nothing when there is no entry. Borrowed.
  KRMutableSingleValue* mainValue() const;
  /// The place of the entry that is marked, or nothing when none is.
  std::optional<size_t> mainIndex() const { return main_ == kNone ? std::nullopt : std::optional<size_t>(main_); }
  /// Marks the entry at `index` as the main one; out of range unmarks. Removing entries moves the mark along.
  void setMainIndex(size_t index);

  /// A copy with a list of its own: entries can be added to and removed from it without touching this value. The
  /// entries themselves are shared.
  KRRef<KRMutableMultipleValue> mutableCopy() const;

  bool isEqual(const KRObject* other) const override;
  uint64_t hash() const override;
  KRString description() const override;
  KRText archiveClassName() const override;
  void encodeWithCoder(KRKeyedArchiver& coder) const override;
  static KRRef<KRObject> decode(KRKeyedUnarchiver& coder);

 private:
  static constexpr size_t kNone = static_cast<size_t>(-1);
  std::vector<KRRef<KRMutableSingleValue>> entries_;
  size_t main_ = kNone;
};
