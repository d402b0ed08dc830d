#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "platform/KRBinaryPlist.h"

/// Property lists for tests: their text, in which two lists are the same exactly when they hold the same, and random
/// ones.
namespace KRPlistTrees {

using Kind = KRBinaryPlist::Kind;
using Node = KRBinaryPlist::Node;

inline std::string hex(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    char pair[3];
    std::snprintf(pair, sizeof pair, "%02x", static_cast<unsigned>(static_cast<unsigned char>(c)));
    text += pair;
  }
  return text;
}

inline std::string bits(double number) {
  char text[20];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(std::bit_cast<uint64_t>(number)));
  return text;
}

/// Recursive, and written out in full where something is shared: for small lists.
inline std::string textOf(const KRBinaryPlist& plist, Node node) {
  switch (plist.kind(node)) {
    case Kind::Null:
      return "n";
    case Kind::Truth:
      return plist.truth(node) ? "t" : "f";
    case Kind::Integer:
      return "i" + std::to_string(plist.integer(node));
    case Kind::Unsigned:
      return "i" + std::to_string(plist.unsignedInteger(node));
    case Kind::Real:
      return "r" + bits(plist.real(node));
    case Kind::Instant:
      return "d" + bits(plist.instant(node));
    case Kind::Data:
      return "x" + hex(plist.data(node));
    case Kind::Text:
      return "s" + hex(plist.text(node).view());
    case Kind::Uid:
      return "u" + std::to_string(plist.uid(node));
    case Kind::Array: {
      std::string text = "[";
      for (const Node element : plist.elements(node)) text += textOf(plist, element) + ",";
      return text + "]";
    }
    case Kind::Dictionary: {
      std::vector<std::string> entries;
      for (size_t i = 0; i < plist.keys(node).size(); ++i) {
        entries.push_back(textOf(plist, plist.keys(node)[i]) + ":" + textOf(plist, plist.values(node)[i]) + ",");
      }
      std::sort(entries.begin(), entries.end());
      std::string text = "{";
      for (const std::string& entry : entries) text += entry;
      return text + "}";
    }
  }
  return "?";
}

inline std::string textOf(const KRBinaryPlist& plist) {
  return textOf(plist, plist.root());
}

/// What random lists may hold, as far as not every program knows every kind.
struct Choice {
  bool withNull = true;
  bool withNegative = true;
  /// Integers above the largest `int64_t`.
  bool withUnsigned = true;
  bool withZeroBytes = true;
  /// Shared arrays and dictionaries.
  bool withSharing = true;
};

/// Makes random lists; the same seed makes the same ones everywhere.
class Maker {
 public:
  Maker(uint32_t seed, Choice choice) : random_(seed), choice_(choice) {}

  KRBinaryPlist list() {
    KRBinaryPlist plist;
    containers_.clear();
    std::vector<Node> keys;
    std::vector<Node> values;
    const uint32_t count = below(12);
    for (uint32_t i = 0; i <= count; ++i) {
      keys.push_back(add(plist, "key " + std::to_string(i) + text()));
      values.push_back(value(plist, static_cast<int>(below(5))));
    }
    plist.setRoot(plist.addDictionary(keys, values));
    return plist;
  }

 private:
  uint32_t below(uint32_t limit) { return static_cast<uint32_t>(random_() % limit); }

  std::string text() {
    static constexpr const char* kPieces[] = {"a", "Z",  "0",  " ",      "\n",     "\x7f", "é",
                                              "ß", "李", "小", "\u0800", "\uffff", "😀",    "👪"};
    static constexpr uint32_t kLengths[] = {0, 1, 3, 14, 15, 16, 40, 300};
    std::string text;
    const bool isAscii = below(2) == 0;
    for (uint32_t i = kLengths[below(8)]; i > 0; --i) text += kPieces[below(isAscii ? 6 : 14)];
    if (choice_.withZeroBytes && below(8) == 0) text += '\0';
    return text;
  }

  static Node add(KRBinaryPlist& plist, std::string_view text) { return plist.addText(text); }

  std::string bytes() {
    std::string bytes;
    for (uint32_t i = below(2) == 0 ? below(20) : below(700); i > 0; --i) bytes += static_cast<char>(below(256));
    return bytes;
  }

  uint64_t number() { return ((uint64_t{random_()} << 32U) | random_()) >> below(64); }

  Node container(KRBinaryPlist& plist, int depth) {
    const uint32_t count = below(4) == 0 ? below(40) : below(4);
    std::vector<Node> keys;
    std::vector<Node> values;
    const bool isArray = below(2) == 0;
    for (uint32_t i = 0; i < count; ++i) {
      if (!isArray) keys.push_back(add(plist, text() + std::to_string(i)));
      values.push_back(value(plist, depth - 1));
    }
    containers_.push_back(isArray ? plist.addArray(values) : plist.addDictionary(keys, values));
    return containers_.back();
  }

  Node value(KRBinaryPlist& plist, int depth) {
    if (choice_.withSharing && !containers_.empty() && below(12) == 0) {
      return containers_[below(static_cast<uint32_t>(containers_.size()))];
    }
    switch (below(depth > 0 ? 14 : 10)) {
      case 0:
        return choice_.withNull ? plist.addNull() : plist.addTruth(true);
      case 1:
        return plist.addTruth(below(2) == 0);
      case 2:
        return plist.addInteger(static_cast<int64_t>(number() >> 1U));
      case 3:
        return choice_.withNegative ? plist.addInteger(-1 - static_cast<int64_t>(number() >> 1U)) : plist.addInteger(0);
      case 4:
        return plist.addUnsigned(choice_.withUnsigned ? number() : number() >> 1U);
      case 5:
        return plist.addReal(below(4) == 0 ? below(10) : std::bit_cast<double>(number() & 0xFFEFFFFFFFFFFFFFU));
      case 6:
        return plist.addInstant(static_cast<double>(static_cast<int64_t>(below(2000000000)) - 1000000000));
      case 7:
        return plist.addData(bytes());
      case 8:
        return plist.addUid(below(2) == 0 ? below(300) : static_cast<uint32_t>(random_()));
      case 9:
        return add(plist, text());
      default:
        return container(plist, depth);
    }
  }

  std::mt19937 random_;
  Choice choice_;
  std::vector<Node> containers_;
};

}  // namespace KRPlistTrees
