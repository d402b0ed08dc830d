#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/KRBinaryPlistSource.h"
#include "platform/KRBinaryPlistValue.h"
#include "platform/KRText.h"

/// A property list in memory, read from and written to the binary format ("bplist00"): dictionaries with text keys,
/// arrays, texts, integers, reals, truth, instants, bytes, references (UID, used by keyed archives) and null.
///
/// All values stand in one table and name one another by their places in it, as in the file: values that are used
/// several times are kept once, and no walk over the file recurses. New values can be added to a list that was read;
/// only what the root leads to is written.
///
/// What was read is looked at where it stands in the bytes, and takes no memory beside them but for texts in UTF-16.
/// Reading checks every offset, place, type and count; a list that is damaged in any way is nothing. Objects that
/// overlap, containers that hold themselves, and keys that are no texts count as damage. Time and memory of reading and
/// of writing are linear in the size. Adding the value of the place `kNone` throws `std::bad_alloc`.
///
/// Reading a value under a kind that it does not have gives zero, nothing or none. A `const` list may be read from
/// several threads at once.
class KRBinaryPlist {
 public:
  /// The place of a value in the table.
  using Node = uint32_t;
  static constexpr Node kNone = 0xFFFFFFFFU;

  using Kind = KRBinaryPlistKind;
  using Links = KRBinaryPlistLinks;

  /// An empty list, whose root is `kNone`.
  KRBinaryPlist() = default;

  /// The list in the bytes, or nothing when they are damaged. The list looks at the bytes as long as it lives: they are
  /// the caller's to keep, unchanged.
  static std::optional<KRBinaryPlist> read(std::string_view bytes);

  /// The binary form of what the root leads to. Equal scalars are written once. Empty when there is no root.
  std::string write() const;

  Node root() const noexcept { return root_; }
  void setRoot(Node root) noexcept { root_ = root; }
  /// How many values the table has.
  size_t count() const noexcept { return source_.count() + values_.size(); }

  Kind kind(Node node) const noexcept;
  bool truth(Node node) const noexcept;
  int64_t integer(Node node) const noexcept;
  /// An integer of either kind; a negative one is zero.
  uint64_t unsignedInteger(Node node) const noexcept;
  double real(Node node) const noexcept;
  /// Seconds since 2001-01-01 00:00:00 UTC.
  double instant(Node node) const noexcept;
  uint64_t uid(Node node) const noexcept;
  /// Nothing for what is no text. Valid until a value is added.
  KRText text(Node node) const noexcept;
  /// Valid until a value is added.
  std::string_view data(Node node) const noexcept;
  /// The elements of an array. Valid until a value is added.
  Links elements(Node node) const noexcept;
  /// The keys of a dictionary, and the values in the order of the keys. Valid until a value is added.
  Links keys(Node node) const noexcept;
  Links values(Node node) const noexcept;
  /// The value under a key of a dictionary, `kNone` when it is not there. Of two equal keys the first counts. Linear.
  Node find(Node dictionary, KRText key) const noexcept;

  Node addNull();
  Node addTruth(bool value);
  Node addInteger(int64_t value);
  Node addUnsigned(uint64_t value);
  Node addReal(double value);
  Node addInstant(double secondsSince2001);
  Node addUid(uint64_t value);
  Node addText(KRText text);
  Node addData(std::string_view bytes);
  /// The elements are values of this list, added before: so no container can hold itself.
  Node addArray(std::span<const Node> elements);
  /// As many keys as values; the keys are texts of this list, all different.
  Node addDictionary(std::span<const Node> keys, std::span<const Node> values);

 private:
  friend class KRBinaryPlistReader;
  friend class KRBinaryPlistWriter;

  using Value = KRBinaryPlistValue;

  /// A text that was read from UTF-16: where it stands in `own_`.
  struct Wide {
    Node node = kNone;
    uint64_t place = 0;
    uint64_t size = 0;
  };

  Node add(Kind kind, uint64_t bits, uint64_t size = 0);
  /// The value at the place; null where there is none.
  Value value(Node node) const noexcept;
  Value wideText(Node node) const noexcept;
  /// The bits of a value of that kind, 0 for others.
  uint64_t bitsOf(Node node, Kind kind) const noexcept;
  std::string_view bytesOf(const Value& value) const noexcept;
  Links linksOf(const Value& value) const noexcept;

  KRBinaryPlistSource source_;
  /// In the order of their places.
  std::vector<Wide> wide_;
  std::string own_;
  std::vector<Node> links_;
  /// The values that were added, behind those that were read.
  std::vector<Value> values_;
  Node root_ = kNone;
};
