#include "contacts/model/KRInstantMessageServer.h"

#include <algorithm>
#include <mutex>
#include <unordered_map>

#include "contacts/model/KRDecoding.h"
#include "platform/KRASCII.h"
#include "platform/KRKeyedArchiver.h"

namespace {

struct Known {
  KRString name;
  KRString displayName;
};

/// Services that people write into their contacts; the first of a name is the one shown, further rows are other ways
/// in which the same service is written.
constexpr Known kKnown[] = {
    {"aim"_kr, "AIM"_kr},
    {"discord"_kr, "Discord"_kr},
    {"facebook"_kr, "Facebook"_kr},
    {"facebook"_kr, "Messenger"_kr},
    {"gadu-gadu"_kr, "Gadu-Gadu"_kr},
    {"gadu-gadu"_kr, "GaduGadu"_kr},
    {"groupwise"_kr, "GroupWise"_kr},
    {"gtalk"_kr, "Google Talk"_kr},
    {"gtalk"_kr, "GoogleTalk"_kr},
    {"gtalk"_kr, "GTalk"_kr},
    {"icq"_kr, "ICQ"_kr},
    {"irc"_kr, "IRC"_kr},
    {"kakaotalk"_kr, "KakaoTalk"_kr},
    {"line"_kr, "LINE"_kr},
    {"matrix"_kr, "Matrix"_kr},
    {"msnim"_kr, "MSN"_kr},
    {"qq"_kr, "QQ"_kr},
    {"signal"_kr, "Signal"_kr},
    {"sip"_kr, "SIP"_kr},
    {"skype"_kr, "Skype"_kr},
    {"slack"_kr, "Slack"_kr},
    {"teams"_kr, "Teams"_kr},
    {"telegram"_kr, "Telegram"_kr},
    {"threema"_kr, "Threema"_kr},
    {"viber"_kr, "Viber"_kr},
    {"wechat"_kr, "WeChat"_kr},
    {"whatsapp"_kr, "WhatsApp"_kr},
    {"xmpp"_kr, "Jabber"_kr},
    {"xmpp"_kr, "XMPP"_kr},
    {"ymsgr"_kr, "Yahoo"_kr},
    {"ymsgr"_kr, "Yahoo!"_kr},
    {"zoom"_kr, "Zoom"_kr},
};

// Names of services are schemes, so case means the case of ASCII letters.

KRString lowerText(KRText text) {
  return KRString::trusted(krLowerASCII(text.view()));
}

bool sameWithoutCase(KRText a, KRText b) {
  return krEqualsIgnoringCase(a.view(), b.view());
}

class Servers {
 public:
  static Servers& shared() {
    static auto* const servers = new Servers;
    return *servers;
  }

  KRInstantMessageServer* serverNamed(KRText name, KRText displayName) {
    const KRString key = lowerText(name);
    const std::lock_guard lock(lock_);
    KRRef<KRInstantMessageServer>& server = servers_[key];
    if (!server) server = krMake<KRInstantMessageServer>(key, KRString(displayName));
    return server.get();
  }

 private:
  Servers() {
    for (const Known& known : kKnown) {
      servers_.try_emplace(known.name, krMake<KRInstantMessageServer>(known.name, known.displayName));
    }
  }

  std::mutex lock_;
  std::unordered_map<KRString, KRRef<KRInstantMessageServer>> servers_;
};

}  // namespace

KRInstantMessageServer* KRInstantMessageServer::serverWithDisplayName(KRText displayName) {
  const auto* found = std::find_if(std::begin(kKnown), std::end(kKnown),
                                   [&](const Known& known) { return sameWithoutCase(known.displayName, displayName); });
  return found != std::end(kKnown) ? serverWithName(found->name) : nullptr;
}

KRInstantMessageServer* KRInstantMessageServer::serverWithName(KRText name) {
  return name.isEmpty() ? nullptr : Servers::shared().serverNamed(name, name);
}

KRText KRInstantMessageServer::archiveClassName() const {
  return "KRInstantMessageServer";
}

void KRInstantMessageServer::encodeWithCoder(KRKeyedArchiver& coder) const {
  coder.encode(name_, "name");
  coder.encode(displayName_, "displayName");
}

KRRef<KRObject> KRInstantMessageServer::decode(KRKeyedUnarchiver& coder) {
  const KRString name = krDecodeText(coder, "name");
  const KRString displayName = krDecodeText(coder, "displayName");
  // The shared instance of that name, so that identity holds after reading back too.
  if (!name.isEmpty()) {
    return KRRef<KRObject>(Servers::shared().serverNamed(name, displayName.isEmpty() ? name : displayName));
  }
  return krMake<KRInstantMessageServer>(name, displayName);
}
