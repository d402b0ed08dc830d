#include "contacts/model/KRObjectInstantMessage.h"

#include "contacts/model/KRDecoding.h"
#include "contacts/model/KRDescribing.h"
#include "platform/KRHash.h"
#include "platform/KRKeyedArchiver.h"

bool KRObjectInstantMessage::isEqual(const KRObject* other) const {
  const auto* account = dynamic_cast<const KRObjectInstantMessage*>(other);
  return account != nullptr && account->server_ == server_ && account->userName_ == userName_;
}

uint64_t KRObjectInstantMessage::hash() const {
  return krHashMix(userName_.hash(), server_ ? server_->name().hash() : 0);
}

KRString KRObjectInstantMessage::description() const {
  std::string text = "{server = ";
  krAppendQuoted(text, server_ ? server_->name() : KRString());
  text += ", userName = ";
  krAppendQuoted(text, userName_);
  return KRString::trusted(text + "}");
}

KRText KRObjectInstantMessage::archiveClassName() const {
  return "KRObjectInstantMessage";
}

void KRObjectInstantMessage::encodeWithCoder(KRKeyedArchiver& coder) const {
  coder.encode(userName_, "userName");
  coder.encode(server_, "server");
}

KRRef<KRObject> KRObjectInstantMessage::decode(KRKeyedUnarchiver& coder) {
  const auto server = krDecodeObject<KRInstantMessageServer>(coder, "server");
  return krMake<KRObjectInstantMessage>(krDecodeText(coder, "userName"), server.get());
}
