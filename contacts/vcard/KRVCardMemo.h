#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

/// Remembers what was made of short texts, as books repeat few different ones. Holds some hundred at most, whatever a
/// book has. Not locked.
template <class Value>
class KRVCardMemo {
 public:
  static constexpr size_t kMost = 256;
  static constexpr size_t kLongest = 128;

  /// What `make()` gave for that text, now or before; valid until the next call. `make` must depend on nothing else.
  template <class Make>
  const Value& of(std::string_view text, const Make& make) {
    if (text.size() > kLongest) return other_ = make();
    if (const auto found = known_.find(text); found != known_.end()) return found->second;
    if (known_.size() == kMost) known_.clear();
    return known_.emplace(text, make()).first->second;
  }

  size_t count() const noexcept { return known_.size(); }

 private:
  struct Hash {
    using is_transparent = void;
    size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>()(text); }
  };

  std::unordered_map<std::string, Value, Hash, std::equal_to<>> known_;
  Value other_{};
};
