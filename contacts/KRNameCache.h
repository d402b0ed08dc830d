#pragma once

#include <cstddef>
#include <shared_mutex>
#include <unordered_map>

#include "platform/KRString.h"

/// Transliterated names by the key under which a person keeps them: making one is slow, and sorting asks for the same
/// ones again and again. It grows with every key and is never emptied as a whole. Safe from any thread.
class KRNameCache {
 public:
  /// The text under the key, or nothing.
  KRString find(const KRString& key) const;
  /// Keeps a text under the key, in place of an earlier one; a key of nothing is ignored.
  void set(const KRString& key, KRString name);
  void remove(const KRString& key);
  size_t count() const;

 private:
  mutable std::shared_mutex lock_;
  std::unordered_map<KRString, KRString> names_;
};
