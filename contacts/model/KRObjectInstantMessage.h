#pragma once

#include "contacts/model/KRInstantMessageServer.h"
#include "platform/KRObject.h"
#include "platform/KRString.h"

class KRKeyedUnarchiver;

/// An account with a messaging service. Immutable. Equal to one of the very same server and equal user name.
class KRObjectInstantMessage : public KRObject {
 public:
  /// Written form: `initWithUserName:server:`. Either may be nothing.
  KRObjectInstantMessage(KRString userName, KRInstantMessageServer* server)
      : userName_(std::move(userName)), server_(server) {}

  const KRString& userName() const { return userName_; }
  /// The service, or nothing; borrowed, shared by all accounts with it.
  KRInstantMessageServer* server() const { return server_.get(); }

  bool isEqual(const KRObject* other) const override;
  uint64_t hash() const override;
  KRString description() const override;
  KRText archiveClassName() const override;
  void encodeWithCoder(KRKeyedArchiver& coder) const override;
  static KRRef<KRObject> decode(KRKeyedUnarchiver& coder);

 private:
  KRString userName_;
  KRRef<KRInstantMessageServer> server_;
};
