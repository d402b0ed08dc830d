#pragma once

#include "platform/KRObject.h"
#include "platform/KRString.h"

class KRKeyedUnarchiver;

/// The label of a value, such as "home" or "mobile". Equal to a label of the same name.
///
/// Labels of values read from cards are shared between contacts: a changed label is a new one, never a shared one with
/// another name.
class KRLabel : public KRObject {
 public:
  KRLabel() = default;
  /// Sets the name first and then the display name to the same text, as the engine does.
  explicit KRLabel(const KRString& name) : name_(name), displayName_(name) {}

  /// The key of the label; nothing until set.
  KRString name() const { return name_; }
  void setName(KRString name) { name_ = std::move(name); }
  /// The text shown to the user; nothing until set.
  KRString displayName() const { return displayName_; }
  void setDisplayName(KRString displayName) { displayName_ = std::move(displayName); }

  bool isEqual(const KRObject* other) const override;
  uint64_t hash() const override;
  /// The name.
  KRString description() const override;
  KRText archiveClassName() const override;
  void encodeWithCoder(KRKeyedArchiver& coder) const override;
  static KRRef<KRObject> decode(KRKeyedUnarchiver& coder);

 private:
  KRString name_;
  KRString displayName_;
};
