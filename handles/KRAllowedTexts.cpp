#include "handles/KRAllowedTexts.h"

#include <algorithm>

#include "issues/KRNameConstraintManager.h"

namespace {

/// Appends the text to the list unless it is there; whether it was appended.
bool extend(KRStringList& items, const KRString& text) {
  if (text.isNothing() || std::find(items.begin(), items.end(), text) != items.end()) return false;
  items.push_back(text);
  return true;
}

}  // namespace

void krAllowPrefix(const KRString& text) {
  KRNameConstraintManager& manager = KRNameConstraintManager::ShareNameConstrainManager();
  KRStringList items = manager.prefixItemArray();
  if (extend(items, text)) manager.setPrefixItemArray(&items);
}

void krAllowSuffix(const KRString& text) {
  KRNameConstraintManager& manager = KRNameConstraintManager::ShareNameConstrainManager();
  KRStringList items = manager.suffixItemArray();
  if (extend(items, text)) manager.setSuffixItemArray(&items);
}
