#pragma once

#include "platform/KRObject.h"
#include "platform/KRString.h"

class KRKeyedUnarchiver;

/// A phone number as typed; nothing is changed in it. Immutable. Equal to one of the same text, character for
/// character.
class KRObjectPhone : public KRObject {
 public:
  /// Written form: `initWithPhoneNumber:`. The text may be nothing.
  explicit KRObjectPhone(KRString phoneNumber) : phoneNumber_(std::move(phoneNumber)) {}

  const KRString& phoneNumber() const { return phoneNumber_; }

  bool isEqual(const KRObject* other) const override;
  uint64_t hash() const override;
  /// The text.
  KRString description() const override;
  KRText archiveClassName() const override;
  void encodeWithCoder(KRKeyedArchiver& coder) const override;
  static KRRef<KRObject> decode(KRKeyedUnarchiver& coder);

 private:
  KRString phoneNumber_;
};
