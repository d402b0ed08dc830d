#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/KRBinaryPlist.h"
#include "platform/KRHashIndex.h"
#include "platform/KRValue.h"

/// Writes values and the objects that they refer to into a keyed archive: a binary property list with the entries
/// "$archiver" (NSKeyedArchiver), "$version" (100000), "$top" (the root's place under "root") and "$objects" (a flat
/// list of everything archived, "$null" first), in which every reference is a place in "$objects". The files open in
/// every program that reads the format.
///
/// How values are written: text, truth, whole numbers, numbers and bytes as the property list has them; a
/// `KRValueList` as NSMutableArray, a `KRValueMap` as NSMutableDictionary; an object with an `archiveClassName` as a
/// record of that class (chain: the class, NSObject) filled by its own `encodeWithCoder`. A `KRDate` is a record of the
/// class "KRDate" with the integers "year" (left out when unknown), "month" and "day": the format's own dates are
/// instants, which a birthday is not. Nothing is "$null", and so is an object that cannot be archived.
///
/// An object that is met again is written once, so shared objects stay shared and cycles are possible. Equal texts and
/// numbers are written once too. Bodies are written from a queue, not by recursion: nesting may have any depth, and the
/// time is linear in what is written.
///
/// One archiver writes one archive, on one thread; what it writes must not change meanwhile.
class KRKeyedArchiver {
 public:
  /// The archive of the value.
  static std::string archivedData(const KRValue& root);

  /// Whether the value is written as something: not nothing, and no object without an `archiveClassName`.
  static bool canArchive(const KRValue& value);

  // For `encodeWithCoder`: fields of the object whose body is being written. A key that is encoded again replaces the
  // former value.

  /// (written form: `encodeObject:forKey:`) Nothing is written too, as "$null": the key is there when read.
  void encode(const KRValue& value, KRText forKey);
  /// A number in the record itself, not an object of its own (written form: `encodeInteger:forKey:`).
  void encodeInteger(int64_t value, KRText forKey);
  /// (written form: `encodeBool:forKey:`)
  void encodeBool(bool value, KRText forKey);
  /// (written form: `encodeDouble:forKey:`)
  void encodeNumber(double value, KRText forKey);

 private:
  using Node = KRBinaryPlist::Node;

  KRKeyedArchiver();
  std::string finish(const KRValue& root);
  /// The place of the value in "$objects"; a new one is reserved for what is met for the first time.
  uint32_t place(const KRValue& value);
  uint32_t placeOfObject(KRObject* object);
  uint32_t placeOfDate(const KRDate& date);
  uint32_t placeOfText(KRText text);
  /// The place of the record of a class; `base` stands between it and the root class, or is nothing.
  uint32_t placeOfClass(KRText name, KRText base);
  uint32_t newPlace(Node node);
  void writeBody(uint32_t place, const KRObject& object);
  void writeList(const KRValueList& list);
  void writeMap(const KRValueMap& map);
  Node reference(const KRValue& value);
  Node keyNode(KRText text);
  Node fieldKey(KRText key);
  /// Sets a field of the record being written; `closeRecord` makes the record of them.
  void setField(Node key, Node value);
  Node closeRecord(KRText className, KRText base);

  /// An object that has a place. It is kept until the end, so that no other object gets its address meanwhile.
  struct Kept {
    KRRef<KRObject> object;
    uint32_t place = 0;
  };

  KRBinaryPlist plist_;
  std::vector<Node> objects_;
  /// All objects met, in the order in which their bodies are written.
  std::vector<Kept> queue_;
  /// Finds the objects in the queue, and texts by their places.
  KRHashIndex queueIndex_;
  KRHashIndex textIndex_;
  /// The reference to each place, made when it is first referred to.
  std::vector<Node> references_;
  std::unordered_map<KRString, uint32_t, KRTextHash, KRTextEqual> placeOfClass_;
  std::unordered_map<KRString, Node, KRTextHash, KRTextEqual> keys_;
  std::unordered_map<int64_t, uint32_t> placeOfWhole_;
  std::unordered_map<uint64_t, uint32_t> placeOfNumber_;
  std::unordered_map<int32_t, uint32_t> placeOfDate_;
  uint32_t placeOfTruth_[2] = {0, 0};
  std::vector<Node> fieldKeys_;
  std::vector<Node> fieldValues_;
};
