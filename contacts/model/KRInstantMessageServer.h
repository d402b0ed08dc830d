#pragma once

#include "platform/KRObject.h"
#include "platform/KRString.h"

class KRKeyedUnarchiver;

/// A messaging service. There is one shared instance a name, so that services can be compared by identity; instances
/// live as long as the process. Safe from any thread.
class KRInstantMessageServer : public KRObject {
 public:
  /// The known service shown under that name, compared without regard to the case of ASCII letters, or nothing (written
  /// form: `serverWithDisplayName:`). Some services answer to a second name too: "Jabber" and "XMPP" are one.
  static KRInstantMessageServer* serverWithDisplayName(KRText displayName);
  /// The service of that name, known or not; made on the first request. Nothing for an empty name.
  static KRInstantMessageServer* serverWithName(KRText name);

  /// The key of the service, lower case: the scheme of its IMPP addresses, such as "xmpp".
  KRString name() const { return name_; }
  KRString displayName() const { return displayName_; }
  KRString description() const override { return name_; }
  KRText archiveClassName() const override;
  void encodeWithCoder(KRKeyedArchiver& coder) const override;
  static KRRef<KRObject> decode(KRKeyedUnarchiver& coder);

  KRInstantMessageServer(KRString name, KRString displayName)
      : name_(std::move(name)), displayName_(std::move(displayName)) {}

 private:
  KRString name_;
  KRString displayName_;
};
