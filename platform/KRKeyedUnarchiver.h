#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/KRBinaryPlist.h"
#include "platform/KRValue.h"

class KRKeyedUnarchiver;

/// How the objects of one class are made from an archive: one row of the tables that callers of the unarchiver give.
struct KRArchiveClass {
  /// The class's name in archives, as its `archiveClassName` tells it.
  KRText name;
  /// Makes an object from the record that the coder stands at (written form: `initWithCoder:`). Nothing means that the
  /// record is damaged, and with it the whole archive.
  KRRef<KRObject> (*decode)(KRKeyedUnarchiver& coder) = nullptr;
};

/// Reads keyed archives, those of `KRKeyedArchiver` and those of other programs that write the same format.
///
/// Lists (NSArray, NSMutableArray) become `KRValueList`, maps with text keys (NSDictionary, NSMutableDictionary)
/// `KRValueMap`, bytes (plain, NSData, NSMutableData) `KRData`, texts (plain, NSString, NSMutableString) text; an
/// NSDate becomes the calendar date that it has in UTC. Every other class is looked up in the caller's table. An object
/// that is referred to from several places is decoded once and shared; bytes that also stand in a record without a
/// reference become a second object.
///
/// A damaged archive is nothing, whatever the damage: a broken property list, a reference to no object, a class that
/// is unknown, a decoder that refuses. Time and memory are linear in the size of the archive, whatever it holds; what
/// would be larger than that when written out in full, or nested deeper than `kDeepest`, is damaged.
///
/// One unarchiver reads one archive, on one thread.
class KRKeyedUnarchiver {
 public:
  /// How deep objects, lists and maps may stand in one another.
  static constexpr int kDeepest = 400;

  /// The root value of the archive, or `nullopt` when it is damaged. The root may be nothing (an archive of nothing).
  /// When a name stands twice in the table, the first counts.
  static std::optional<KRValue> unarchive(std::string_view data, std::span<const KRArchiveClass> classes);

  // For decoders: the fields of the record being decoded.

  /// Whether the key is there, even if nothing is under it (written form: `containsValueForKey:`).
  bool contains(KRText key) const;
  /// The value under the key, nothing when the key is not there (written form: `decodeObjectForKey:`).
  KRValue decode(KRText forKey);
  /// Nothing when the key is not there or holds no whole number (written form: `decodeIntegerForKey:`). The number may
  /// stand in the record or be an object of its own, in all three.
  std::optional<int64_t> decodeInteger(KRText forKey) const;
  /// A whole number is true when it is not 0 (written form: `decodeBoolForKey:`).
  std::optional<bool> decodeBool(KRText forKey) const;
  /// (written form: `decodeDoubleForKey:`)
  std::optional<double> decodeNumber(KRText forKey) const;

  /// Tells the object under decoding before its fields are decoded, so that they can refer back to it. Without it, a
  /// record that leads back to itself is damaged. The decoder returns that same object in the end, and sees to it that
  /// the two do not keep each other alive.
  void setObject(KRRef<KRObject> object);

  /// Declares the archive damaged.
  void fail() { failed_ = true; }

 private:
  using Node = KRBinaryPlist::Node;
  enum class Kind : uint8_t { Unknown, List, Map, Instant, CalendarDate, Bytes, Text, Own };
  struct Class {
    Kind kind = Kind::Unknown;
    const KRArchiveClass* own = nullptr;
  };
  enum class State : uint8_t { Untouched, Busy, Done };
  /// What became of one place of "$objects".
  struct Entry {
    KRValue value;
    /// How many values it would be if nothing was shared.
    uint64_t expanded : 52 = 1;
    /// How deep records stand in it, itself included: at most one more than `kDeepest`.
    uint64_t height : 10 = 0;
    uint64_t state : 2 = static_cast<uint64_t>(State::Untouched);

    bool is(State sought) const noexcept { return state == static_cast<uint64_t>(sought); }
    void become(State next) noexcept { state = static_cast<uint64_t>(next) & 0x3U; }
    int depth() const noexcept { return static_cast<int>(height); }
  };

  KRKeyedUnarchiver(const KRBinaryPlist& plist, size_t size, std::span<const KRArchiveClass> classes);
  std::optional<KRValue> decodeRoot();
  bool openObjects();
  KRValue decodeNode(Node node);
  KRValue decodePlace(uint64_t place);
  void decodeEntry(uint32_t place);
  /// A value without references.
  KRValue newPlainValue(Node node);
  /// The same for one that stands in a record or a list itself, not at a place: texts and bytes are made once.
  KRValue plainValue(Node node);
  KRValue decodeRecord();
  KRValue decodeList();
  KRValue decodeMap();
  KRValue decodeInstant();
  KRValue decodeCalendarDate();
  KRValue decodeOwn(const KRArchiveClass& own);
  /// The class of the record being decoded.
  Class classOfRecord();
  Class classOfName(KRText name) const;
  Class classOfClassRecord(Node classRecord) const;
  /// What stands under a key of the record being decoded, `kNone` where nothing does. Of two equal keys the first
  /// counts.
  Node find(KRText key) const;
  KRText textOfKey(Node key) const;
  /// The same with the references in it followed.
  Node field(KRText key) const;
  Node resolved(Node node) const;
  /// The elements of the array under a key of the format's own; damage when there is none.
  KRBinaryPlist::Links elements(KRText key);
  KRValue damaged();

  const KRBinaryPlist& plist_;
  /// Bytes of the longest name in the caller's table.
  size_t longestName_ = 0;
  std::unordered_map<KRText, const KRArchiveClass*, KRTextHash, KRTextEqual> own_;
  std::unordered_map<Node, Class> classOfClassRecord_;
  std::unordered_map<Node, KRValue> plainValues_;
  KRBinaryPlist::Links objects_;
  /// For every place, the first place with the same node: a record is decoded once however many places name it.
  std::vector<uint32_t> firstPlace_;
  std::vector<Entry> entries_;
  /// A record: its keys, and its values in their order.
  struct Record {
    KRBinaryPlist::Links keys;
    KRBinaryPlist::Links values;
  };
  struct Key {
    Node node = KRBinaryPlist::kNone;
    KRText text;
  };

  /// The record being decoded, and its place; the first place, which no record has, when there is none.
  Record record_;
  uint32_t place_ = 0;
  /// Texts of keys, each where its node's lowest bits say: nearly all records have the same few.
  mutable std::array<Key, 64> keys_;
  /// How many elements may still be decoded: arrays that many records share must not multiply.
  uint64_t elementsLeft_;
  uint64_t expanded_ = 0;
  const uint64_t largestExpanded_;
  /// How many records are being decoded around the present place, and how deep the deepest of those in the present one
  /// stands.
  int depth_ = 0;
  int height_ = 0;
  bool failed_ = false;
};
