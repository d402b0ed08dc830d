#pragma once

#include "platform/KRObject.h"
#include "platform/KRString.h"

class KRKeyedUnarchiver;

/// An e-mail address as typed; nothing is changed in it. Immutable. Equal to one of the same text, character for
/// character.
class KRObjectEmail : public KRObject {
 public:
  /// Written form: `initWithEmail:`. The text may be nothing.
  explicit KRObjectEmail(KRString email) : email_(std::move(email)) {}

  const KRString& email() const { return email_; }

  bool isEqual(const KRObject* other) const override;
  uint64_t hash() const override;
  /// The text.
  KRString description() const override;
  KRText archiveClassName() const override;
  void encodeWithCoder(KRKeyedArchiver& coder) const override;
  static KRRef<KRObject> decode(KRKeyedUnarchiver& coder);

 private:
  KRString email_;
};
