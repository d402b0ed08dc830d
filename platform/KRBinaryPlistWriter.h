#pragma once

#include <span>
#include <vector>

#include "platform/KRBinaryPlist.h"
#include "platform/KRBinaryPlistBytes.h"
#include "platform/KRBuffer.h"
#include "platform/KRHashIndex.h"

/// Writes the binary form of one property list; a part of `KRBinaryPlist`, which is what callers use.
///
/// The values that the root leads to are numbered in the order in which they are met, level by level: the list of the
/// numbered ones is the queue of those whose links are still to be followed, so nothing recurses.
class KRBinaryPlistWriter {
 public:
  explicit KRBinaryPlistWriter(const KRBinaryPlist& list);

  /// The bytes, none when there is no root. To be called once; throws `std::bad_alloc` where there is no memory.
  KRBuffer write();

 private:
  using Node = KRBinaryPlist::Node;
  using Value = KRBinaryPlistValue;

  void numberValues();
  void numberLinks(const Value& value);
  /// The value that stands for all equal scalars; containers stand for themselves.
  Node representative(Node node);
  Node representativeOfUid(Node node, uint64_t uid);
  uint64_t hash(const Value& value) const;
  bool isSame(const Value& a, const Value& b) const;

  void writeValue(const Value& value, KRBinaryPlistBytes& bytes);
  /// The numbers of what a container holds; valid until the next call.
  std::span<const Node> numbersOf(const Value& container);

  const KRBinaryPlist& list_;
  /// The number of each value in the file, `kNone` for those that have none (yet).
  std::vector<Node> numbers_;
  /// The values in the order of their numbers.
  std::vector<Node> order_;
  /// The scalars that have a number.
  KRHashIndex scalars_;
  /// The same for references, which in archives are many and small: by the place that they refer to.
  std::vector<Node> uids_;
  std::vector<Node> linked_;
};
