#include "contacts/KRAcountType.h"

#include <utility>

#include "platform/KRResources.h"

namespace {

struct Kind {
  KRString name;
  KRString icon;
};
constexpr Kind kKinds[] = {
    {KRAccountTypeGoogle, "pic_G"_kr},   {KRAccountTypeFacebook, "pic_F"_kr}, {KRAccountTypeTwitter, "pic_T"_kr},
    {KRAccountTypeLinkedIn, "pic_L"_kr}, {KRAccountTypeExchange, "pic_E"_kr}, {KRAccountTypeOutlook, "pic_O"_kr},
};

}  // namespace

KRAcountType::KRAcountType(KRString name, KRRef<KRData> thumbnail)
    : name_(std::move(name)), thumbnail_(std::move(thumbnail)) {}

const std::vector<KRRef<KRAcountType>>& KRAcountType::supportAddressBoolType() {
  static const auto* const types = [] {
    auto* made = new std::vector<KRRef<KRAcountType>>;
    for (const Kind& kind : kKinds) made->push_back(krMake<KRAcountType>(kind.name, loadImageByName(kind.icon)));
    return made;
  }();
  return *types;
}

const std::unordered_map<KRString, KRRef<KRAcountType>>& KRAcountType::addressBoolTypeDictionary() {
  static const auto* const byName = [] {
    auto* made = new std::unordered_map<KRString, KRRef<KRAcountType>>;
    for (const auto& type : supportAddressBoolType()) made->emplace(type->name(), type);
    return made;
  }();
  return *byName;
}

KRAcountType* KRAcountType::typeWithName(const KRString& name) {
  const auto& byName = addressBoolTypeDictionary();
  const auto found = byName.find(name);
  return found != byName.end() ? found->second.get() : nullptr;
}

KRRef<KRData> KRAcountType::loadImageByName(const KRString& name) {
  return KRResources::imageNamed(name);
}
