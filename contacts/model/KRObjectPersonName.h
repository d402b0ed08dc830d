#pragma once

#include "platform/KRObject.h"
#include "platform/KRString.h"

class KRKeyedUnarchiver;

/// A person's name in its parts, any of which may be nothing; nothing differs from an empty part. Immutable. Equal to a
/// name of equal parts.
class KRObjectPersonName : public KRObject {
 public:
  /// Written form: `initWithFirst:middle:last:`.
  KRObjectPersonName(KRString first, KRString middle, KRString last)
      : first_(std::move(first)), middle_(std::move(middle)), last_(std::move(last)) {}

  const KRString& first() const { return first_; }
  const KRString& middle() const { return middle_; }
  const KRString& last() const { return last_; }

  /// The whole name as shown: the parts that are not empty, joined by spaces in the order first, middle, last; a name
  /// written in Chinese, Japanese or Korean characters only is last, middle, first without spaces. "" for no part.
  KRString displayString() const;
  /// The same, for parts that are still views.
  static KRString displayString(KRText first, KRText middle, KRText last);
  /// Writes it to the end of `to`.
  static void appendDisplayString(std::string& to, KRText first, KRText middle, KRText last);

  bool isEqual(const KRObject* other) const override;
  uint64_t hash() const override;
  KRString description() const override;
  KRText archiveClassName() const override;
  void encodeWithCoder(KRKeyedArchiver& coder) const override;
  static KRRef<KRObject> decode(KRKeyedUnarchiver& coder);

 private:
  KRString first_;
  KRString middle_;
  KRString last_;
};
