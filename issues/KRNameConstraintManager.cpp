#include "issues/KRNameConstraintManager.h"

#include <atomic>
#include <span>

#include "contacts/undo/KRUndoRecorder.h"
#include "issues/KRSharedInstance.h"
#include "issues/KRStoredSettings.h"
#include "platform/KRKeyedArchiver.h"
#include "platform/KRKeyedUnarchiver.h"
#include "platform/KRSupportFuction.h"
#include "platform/KRValue.h"

namespace {

constexpr KRString kPreferencesKey = "KR_NAME_CONSTRAIN_MANAGER_KEY"_kr;
constexpr KRString kPrefixKey = "KR_PREFIX_CONSTRAIN_KEY"_kr;
constexpr KRString kSuffixKey = "KR_SUFFIX_CONSTRAIN_KEY"_kr;

// The entries stand as people write them, in mixed case and not sorted.

constexpr KRString kEnglishPrefixes[] = {
    "1LT"_kr,    "1ST"_kr,     "2LT"_kr,       "2ND"_kr,     "3RD"_kr,      "Adm"_kr,     "Admiral"_kr, "Cardinal"_kr,
    "Capt"_kr,   "Captain"_kr, "CDR"_kr,       "Chief"_kr,   "Col"_kr,      "Colonel"_kr, "Count"_kr,   "Cpt"_kr,
    "Doctor"_kr, "Dr"_kr,      "Gen"_kr,       "General"_kr, "LCDR"_kr,     "Lord"_kr,    "Lt"_kr,      "LTC"_kr,
    "LTG"_kr,    "LTJG"_kr,    "Maj"_kr,       "Major"_kr,   "MG"_kr,       "Mr"_kr,      "Mrs"_kr,     "Ms"_kr,
    "Pastor"_kr, "Prof"_kr,    "Professor"_kr, "Rep"_kr,     "Reverend"_kr, "Sen"_kr,     "Senator"_kr, "Sir"_kr};

constexpr KRString kFrenchPrefixes[] = {"1er"_kr, "1re"_kr,  "2d"_kr, "2de"_kr, "2e"_kr, "3e"_kr,  "M."_kr,
                                        "Mme"_kr, "Mlle"_kr, "Dr"_kr, "Pr"_kr,  "Me"_kr, "Mgr"_kr, "no"_kr};

constexpr KRString kEnglishSuffixes[] = {"2nd"_kr,    "3rd"_kr, "4th"_kr,  "5th"_kr, "6th"_kr, "BA"_kr, "DDS"_kr,
                                         "ESQ"_kr,    "I"_kr,   "II"_kr,   "III"_kr, "IV"_kr,  "IX"_kr, "Jr"_kr,
                                         "Junior"_kr, "MA"_kr,  "MD"_kr,   "MS"_kr,  "PhD"_kr, "Sr"_kr, "V"_kr,
                                         "VI"_kr,     "VII"_kr, "VIII"_kr, "X"_kr};

// The abbreviations of units are there on purpose.
constexpr KRString kFrenchSuffixes[] = {"etc."_kr, "h"_kr,  "s"_kr,  "km"_kr, "min"_kr, "al"_kr,  "I"_kr,    "II"_kr,
                                        "III"_kr,  "IV"_kr, "IX"_kr, "V"_kr,  "VI"_kr,  "VII"_kr, "VIII"_kr, "X"_kr};

enum class Language : uint8_t { Unknown, French, NotFrench };
std::atomic<Language> language{Language::Unknown};

const KRArchiveClass& archiveClass() {
  static constexpr KRArchiveClass kClass{"KRNameConstraintManager", [](KRKeyedUnarchiver& coder) {
                                           return KRRef<KRObject>(KRNameConstraintManager::initWithCoder(coder));
                                         }};
  return kClass;
}

void append(KRStringList& list, std::span<const KRString> items) {
  list.insert(list.end(), items.begin(), items.end());
}

void replace(KRStringList& list, const KRStringList* items) {
  // The list given may be this very list.
  KRStringList given = items != nullptr ? *items : KRStringList();
  list.clear();
  append(list, given);
}

KRStringList decodedList(KRKeyedUnarchiver& coder, KRText key) {
  const KRValue stored = coder.decode(key);
  const auto* list = stored.as<KRValueList>();
  return list != nullptr ? list->texts() : KRStringList();
}

}  // namespace

KRSharedInstance<KRNameConstraintManager>& KRNameConstraintManager::shared() {
  static auto& instance = *new KRSharedInstance<KRNameConstraintManager>(makeShared);
  return instance;
}

KRNameConstraintManager& KRNameConstraintManager::ShareNameConstrainManager() {
  return shared().get();
}

void KRNameConstraintManager::reloadShared() {
  shared().forget();
}

KRRef<KRNameConstraintManager> KRNameConstraintManager::makeShared() {
  auto manager = krSettingsAs<KRNameConstraintManager>(krStoredSettings(kPreferencesKey, archiveClass()));
  const bool isStored = static_cast<bool>(manager);
  if (!isStored) manager = withDefaults();
  manager->isShared_ = true;
  manager->savedPrefixes_ = manager->prefixItemArray_;
  manager->savedSuffixes_ = manager->suffixItemArray_;
  if (isStored) return manager;
  // No doing of the user's that could be undone.
  const KRUndoRecorder::Pause pause;
  manager->saveToUserDefault();
  return manager;
}

KRRef<KRNameConstraintManager> KRNameConstraintManager::withDefaults() {
  auto manager = krMake<KRNameConstraintManager>();
  manager->setDefaultPrefixValue();
  manager->setDefaultSuffixValue();
  return manager;
}

KRRef<KRNameConstraintManager> KRNameConstraintManager::init() {
  auto manager = withDefaults();
  const KRUndoRecorder::Pause pause;
  manager->saveToUserDefault();
  return manager;
}

KRRef<KRNameConstraintManager> KRNameConstraintManager::initWithCoder(KRKeyedUnarchiver& coder) {
  auto manager = krMake<KRNameConstraintManager>();
  manager->prefixItemArray_ = decodedList(coder, kPrefixKey);
  manager->suffixItemArray_ = decodedList(coder, kSuffixKey);
  return manager;
}

KRRef<KRNameConstraintManager> KRNameConstraintManager::unarchive(std::string_view data) {
  return krSettingsAs<KRNameConstraintManager>(krUnarchivedSettings(data, archiveClass()));
}

void KRNameConstraintManager::setPrefixItemArray(const KRStringList* items) {
  replace(prefixItemArray_, items);
  saveToUserDefault();
}

void KRNameConstraintManager::setSuffixItemArray(const KRStringList* items) {
  replace(suffixItemArray_, items);
  saveToUserDefault();
}

void KRNameConstraintManager::setDefaultPrefixValue() {
  if (isFrenchLanguage()) {
    append(prefixItemArray_, kFrenchPrefixes);
  } else {
    append(prefixItemArray_, kEnglishPrefixes);
  }
}

void KRNameConstraintManager::setDefaultSuffixValue() {
  if (isFrenchLanguage()) {
    append(suffixItemArray_, kFrenchSuffixes);
  } else {
    append(suffixItemArray_, kEnglishSuffixes);
  }
}

void KRNameConstraintManager::resetPrefixItemArray() {
  prefixItemArray_.clear();
  setDefaultPrefixValue();
  savedPrefixes_.reset();
  saveToUserDefault();
}

void KRNameConstraintManager::resetSuffixItemArray() {
  suffixItemArray_.clear();
  setDefaultSuffixValue();
  savedSuffixes_.reset();
  saveToUserDefault();
}

void KRNameConstraintManager::resetAll() {
  prefixItemArray_.clear();
  suffixItemArray_.clear();
  setDefaultPrefixValue();
  setDefaultSuffixValue();
  savedPrefixes_.reset();
  savedSuffixes_.reset();
  saveToUserDefault();
}

bool KRNameConstraintManager::isFrenchLanguage() {
  Language known = language.load(std::memory_order_relaxed);
  if (known == Language::Unknown) {
    // Threads that race here find out the same.
    const bool french = sameText(KRSupportFuction::loadString("KR_Language"_kr), "French");
    known = french ? Language::French : Language::NotFrench;
    language.store(known, std::memory_order_relaxed);
  }
  return known == Language::French;
}

void KRNameConstraintManager::forgetLanguage() noexcept {
  language.store(Language::Unknown, std::memory_order_relaxed);
}

void KRNameConstraintManager::saveToUserDefault() {
  const KRRef<const KRNameConstraintManager> mine = copy();
  krUpdateSettings(kPreferencesKey, archiveClass(), [mine](const KRRef<KRObject>& stored) {
    return KRRef<KRObject>(mine->mergedInto(krSettingsAs<KRNameConstraintManager>(stored)));
  });
  if (!isShared_) return;
  savedPrefixes_ = prefixItemArray_;
  savedSuffixes_ = suffixItemArray_;
}

KRRef<KRNameConstraintManager> KRNameConstraintManager::copy() const {
  auto manager = krMake<KRNameConstraintManager>();
  manager->prefixItemArray_ = prefixItemArray_;
  manager->suffixItemArray_ = suffixItemArray_;
  manager->savedPrefixes_ = savedPrefixes_;
  manager->savedSuffixes_ = savedSuffixes_;
  return manager;
}

KRRef<KRNameConstraintManager> KRNameConstraintManager::mergedInto(const KRRef<KRNameConstraintManager>& stored) const {
  KRRef<KRNameConstraintManager> merged = copy();
  if (!stored) return merged;
  if (savedPrefixes_) {
    merged->prefixItemArray_ = krMergedTexts(stored->prefixItemArray_, *savedPrefixes_, prefixItemArray_);
  }
  if (savedSuffixes_) {
    merged->suffixItemArray_ = krMergedTexts(stored->suffixItemArray_, *savedSuffixes_, suffixItemArray_);
  }
  return merged;
}

KRText KRNameConstraintManager::archiveClassName() const {
  return archiveClass().name;
}

void KRNameConstraintManager::encodeWithCoder(KRKeyedArchiver& coder) const {
  coder.encode(KRValueList::ofTexts(prefixItemArray_), kPrefixKey);
  coder.encode(KRValueList::ofTexts(suffixItemArray_), kSuffixKey);
}
