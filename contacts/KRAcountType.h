#pragma once

#include <unordered_map>
#include <vector>

#include "platform/KRObject.h"
#include "platform/KRString.h"
#include "platform/KRValue.h"

inline constexpr KRString KRAccountTypeGoogle = "Google"_kr;
inline constexpr KRString KRAccountTypeFacebook = "Facebook"_kr;
inline constexpr KRString KRAccountTypeTwitter = "Twitter"_kr;
inline constexpr KRString KRAccountTypeLinkedIn = "LinkedIn"_kr;
inline constexpr KRString KRAccountTypeExchange = "Exchange"_kr;
inline constexpr KRString KRAccountTypeOutlook = "Outlook"_kr;

/// A kind of online account that an address book may come from: its name and its icon. There is one object a kind, for
/// the life of the process. Immutable, so safe from any thread.
class KRAcountType : public KRObject {
 public:
  /// The six kinds, in a fixed order.
  static const std::vector<KRRef<KRAcountType>>& supportAddressBoolType();
  /// The same by name.
  static const std::unordered_map<KRString, KRRef<KRAcountType>>& addressBoolTypeDictionary();
  /// The kind of exactly that name, or nothing (written form: `typeWithName:`). Borrowed.
  static KRAcountType* typeWithName(const KRString& name);
  /// The library's image of that name (PNG), or nothing (written form: `loadImageByName:`).
  static KRRef<KRData> loadImageByName(const KRString& name);

  KRAcountType(KRString name, KRRef<KRData> thumbnail);

  /// The kind's name, which is also its key.
  KRString name() const { return name_; }
  /// The icon, or nothing.
  KRRef<KRData> thumbnail() const { return thumbnail_; }
  /// Always nothing: no kind has a name for showing yet.
  KRString displayName() const { return displayName_; }

 private:
  const KRString name_;
  const KRRef<KRData> thumbnail_;
  const KRString displayName_;
};
