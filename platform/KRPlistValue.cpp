#include "platform/KRPlistValue.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <span>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace {

using Kind = KRBinaryPlist::Kind;
using Node = KRBinaryPlist::Node;

constexpr double kSecondsOfDay = 86400;
constexpr std::chrono::sys_days kFirstDay = std::chrono::year(2001) / 1 / 1;

class Reader {
 public:
  explicit Reader(const KRBinaryPlist& plist) : plist_(plist) {}

  /// The value at the root, once it is known that it keeps within the limits.
  KRValue read(Node root) {
    const Extent extent = extentOf(root, 0);
    return extent.size > kKRLargestPlistValue || extent.height > kKRDeepestPlistValue ? KRValue() : value(root);
  }

 private:
  /// What a node is when nothing is shared.
  struct Extent {
    /// How many values, at most one more than the limit.
    int64_t size = 1;
    /// How deep the deepest container below the node is.
    int height = 0;
  };

  /// Looks through each node once, and no deeper than the limit.
  Extent extentOf(Node node, int depth) {
    const auto known = extents_.find(node);
    if (known != extents_.end()) return known->second;
    Extent extent;
    if (depth > kKRDeepestPlistValue) return {kKRLargestPlistValue + 1, extent.height};
    for (const KRBinaryPlist::Links& all : {plist_.elements(node), plist_.values(node)}) {
      for (const Node each : all) {
        const Extent part = extentOf(each, depth + 1);
        extent.size = std::min(extent.size + part.size, kKRLargestPlistValue + 1);
        extent.height = std::max(extent.height, part.height + 1);
      }
    }
    extents_.emplace(node, extent);
    return extent;
  }

  KRValue value(Node node) {
    switch (plist_.kind(node)) {
      case Kind::Array:
        return list(node);
      case Kind::Dictionary:
        return map(node);
      default:
        return krPlainValueOfPlist(plist_, node);
    }
  }

  KRValue list(Node node) {
    std::vector<KRValue> values;
    for (const Node element : plist_.elements(node)) {
      values.push_back(value(element));
      if (values.back().isNothing()) return {};
    }
    return krMake<KRValueList>(std::move(values));
  }

  KRValue map(Node node) {
    std::vector<KRValueMap::Entry> entries;
    std::unordered_set<KRText, KRTextHash, KRTextEqual> known;
    for (size_t i = 0; i < plist_.keys(node).size(); ++i) {
      const KRText key = plist_.text(plist_.keys(node)[i]);
      if (!known.insert(key).second) continue;
      entries.push_back({KRString(key), value(plist_.values(node)[i])});
      if (entries.back().value.isNothing()) return {};
    }
    return krMake<KRValueMap>(std::move(entries));
  }

  const KRBinaryPlist& plist_;
  std::unordered_map<Node, Extent> extents_;
};

class Writer {
 public:
  explicit Writer(KRBinaryPlist& plist) : plist_(plist) {}

  std::optional<Node> add(const KRValue& value, int depth) {
    if (--left_ < 0 || depth > kKRDeepestPlistValue) return std::nullopt;
    if (const KRString* text = value.asText()) return plist_.addText(*text);
    if (const bool* truth = value.asTruth()) return plist_.addTruth(*truth);
    if (const int64_t* whole = value.asWhole()) return plist_.addInteger(*whole);
    if (const double* number = value.asNumber()) return plist_.addReal(*number);
    if (const KRDate* date = value.asDate()) return addDate(*date);
    if (const auto* data = value.as<KRData>()) return plist_.addData(data->bytes());
    if (const auto* list = value.as<KRValueList>()) return addList(*list, depth + 1);
    if (const auto* map = value.as<KRValueMap>()) return addMap(*map, depth + 1);
    return std::nullopt;
  }

 private:
  std::optional<Node> addDate(const KRDate& date) {
    if (!date.hasYear()) return std::nullopt;
    const std::chrono::sys_days day = std::chrono::year(*date.year()) / date.month() / date.day();
    return plist_.addInstant(static_cast<double>((day - kFirstDay).count()) * kSecondsOfDay);
  }

  std::optional<Node> addList(const KRValueList& list, int depth) {
    std::vector<Node> elements;
    for (const KRValue& value : list.values()) {
      const std::optional<Node> element = add(value, depth);
      if (!element) return std::nullopt;
      elements.push_back(*element);
    }
    return plist_.addArray(elements);
  }

  std::optional<Node> addMap(const KRValueMap& map, int depth) {
    std::vector<Node> keys;
    std::vector<Node> values;
    for (const KRValueMap::Entry& entry : map.entries()) {
      const std::optional<Node> value = entry.key.isNothing() ? std::nullopt : add(entry.value, depth);
      if (!value) return std::nullopt;
      keys.push_back(plist_.addText(entry.key));
      values.push_back(*value);
    }
    return plist_.addDictionary(keys, values);
  }

  KRBinaryPlist& plist_;
  int64_t left_ = kKRLargestPlistValue;
};

}  // namespace

KRValue krValueOfPlist(const KRBinaryPlist& plist, Node node) {
  return Reader(plist).read(node);
}

KRValue krPlainValueOfPlist(const KRBinaryPlist& plist, Node node) {
  switch (plist.kind(node)) {
    case Kind::Truth:
      return KRValue::truth(plist.truth(node));
    case Kind::Integer:
      return KRValue::whole(plist.integer(node));
    case Kind::Unsigned:
      return KRValue::number(static_cast<double>(plist.unsignedInteger(node)));
    case Kind::Real:
      return KRValue::number(plist.real(node));
    case Kind::Instant: {
      const std::optional<KRDate> date = krDateOfInstant(plist.instant(node));
      return date ? KRValue(*date) : KRValue();
    }
    case Kind::Data:
      return krMake<KRData>(plist.data(node));
    case Kind::Text:
      // The list's texts are well-formed.
      return KRString::trusted(plist.text(node).view());
    default:
      return {};
  }
}

std::optional<Node> krAddToPlist(KRBinaryPlist& plist, const KRValue& value) {
  return Writer(plist).add(value, 0);
}

KRValue krCopyThroughPlist(const KRValue& value) {
  KRBinaryPlist plist;
  const std::optional<Node> node = krAddToPlist(plist, value);
  return node ? krValueOfPlist(plist, *node) : KRValue();
}

std::optional<KRDate> krDateOfInstant(double secondsSince2001) {
  // Days from year 0 to year 9999 are within four million of the first.
  const double days = std::floor(secondsSince2001 / kSecondsOfDay);
  if (!(std::fabs(days) < 4e6)) return std::nullopt;
  const std::chrono::year_month_day date(kFirstDay + std::chrono::days(static_cast<int>(days)));
  const int year = static_cast<int>(date.year());
  if (year < 0 || year > 9999) return std::nullopt;
  return KRDate::make(year, static_cast<int>(static_cast<unsigned>(date.month())),
                      static_cast<int>(static_cast<unsigned>(date.day())));
}
