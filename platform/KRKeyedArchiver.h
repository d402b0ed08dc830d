#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/KRBinaryPlistBytes.h"
#include "platform/KRBuffer.h"
#include "platform/KRHashIndex.h"
#include "platform/KRNumberList.h"
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
/// Values go into the file's bytes as they are met, with references of four bytes, and what is kept besides is a few
/// numbers for each: a large archive takes little more memory than its bytes. One for which at most 65,536 values were
/// met is brought into the smallest form that the format has for it, in which it begins with the root and goes on level
/// by level; while that is made, its bytes are there twice.
///
/// Where there is no memory for the archive, or it would have more than 4,294,967,295 values, `std::bad_alloc` is
/// thrown.
///
/// One archiver writes one archive, on one thread; what it writes must not change meanwhile.
class KRKeyedArchiver {
 public:
  /// The archive of the value.
  static KRBuffer archive(const KRValue& root);
  /// The same as a text of bytes, for archives that are small.
  static std::string archivedData(const KRValue& root);

  /// Whether the value is written as something: not nothing, and no object without an `archiveClassName`.
  static bool canArchive(const KRValue& value);

  // For `encodeWithCoder`: fields of the object whose body is being written. A key that is encoded again replaces the
  // former value. A key that is nothing is the empty one.

  /// (written form: `encodeObject:forKey:`) Nothing is written too, as "$null": the key is there when read.
  void encode(const KRValue& value, KRText forKey);
  /// A number in the record itself, not an object of its own (written form: `encodeInteger:forKey:`).
  void encodeInteger(int64_t value, KRText forKey);
  /// (written form: `encodeBool:forKey:`)
  void encodeBool(bool value, KRText forKey);
  /// (written form: `encodeDouble:forKey:`)
  void encodeNumber(double value, KRText forKey);

 private:
  using Number = KRBinaryPlistBytes::Number;
  static constexpr Number kNone = KRBinaryPlistBytes::kNone;

  using Keys = std::unordered_map<KRString, Number, KRTextHash, KRTextEqual>;

  /// What is written once for all that are equal to it: texts, numbers, truth and data.
  struct Scalar {
    Number number;
    /// The reference to it, `kNone` while it is only used by its number.
    Number reference = kNone;
  };

  KRKeyedArchiver();
  KRBuffer finish(const KRValue& root);
  void writeBodies();
  Number writeTop(Number rootReference);

  /// The reference to a value. What is met for the first time gets the next place in "$objects".
  Number reference(const KRValue& value);
  Number referenceToNothing();
  Number referenceToObject(KRObject* object);
  Number referenceToDate(const KRDate& date);
  Number referenceToScalar(Number fresh);
  /// The record of a class; `base` stands between it and the root class, or is nothing.
  Number referenceToClass(KRText name, KRText base);
  /// The reference to a new place, at which the value stands; `kNone` for one that is written later.
  Number newReference(Number value);

  /// The scalar that was added last. One that was there already takes its place, and the new one is taken back.
  Scalar& once(Number fresh);
  Number keyNumber(KRText text);
  Number fieldKey(KRText key);

  Number writeBody(const KRObject& object);
  void writeList(const KRValueList& list);
  void writeMap(const KRValueMap& map);
  /// Sets a field of the record being written; `closeRecord` makes the record of them.
  void setField(Number key, Number value);
  Number closeRecord(KRText className, KRText base);

  KRBinaryPlistBytes bytes_;
  /// The value at each place of "$objects", `kNone` for objects whose bodies are still to be written.
  KRNumberList objects_;
  /// All objects met, in the order in which their bodies are written, which is that of their places; and the references
  /// to them. They are kept until the end, so that no other object gets the address of one meanwhile; lists and the
  /// like that nobody else has are let go of once they are written, and leave nothing.
  std::vector<KRRef<KRObject>> queue_;
  KRNumberList queueReferences_;
  KRHashIndex queueIndex_{KRHashIndex::Fill::ThreeQuarters};
  std::vector<Scalar> scalars_;
  KRHashIndex scalarIndex_{KRHashIndex::Fill::ThreeQuarters};
  /// The number of each text that is a key; some of them are found by where the key stands in memory.
  Keys keys_;
  std::array<const Keys::value_type*, 64> recentKeys_{};
  /// The references to classes and dates.
  Keys classes_;
  std::unordered_map<int32_t, Number> dates_;
  Number nothing_ = kNone;
  std::vector<Number> fieldKeys_;
  std::vector<Number> fieldValues_;
};
