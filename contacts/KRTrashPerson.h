#pragma once

#include <utility>

#include "contacts/KRTrashAddressBookID.h"
#include "contacts/model/ABPerson.h"
#include "platform/KRAtomic.h"

class KRKeyedUnarchiver;

/// A trashed person as a system record, offered beside the trash: the trash itself keeps temporary persons, and nothing
/// in the library makes one of these. It can be archived. `fromID` is atomic.
class KRTrashPerson : public ABPerson {
 public:
  KRTrashPerson() = default;
  /// A record with the identifier of the person and a copy of what the record interface shows of it, the picture
  /// included (written form: `initWithPerson:fromID:`). `fromID` is the book that the person came from. No person makes
  /// an empty record.
  static KRRef<KRTrashPerson> initWithPerson(const IKRPerson* person, KRString fromID);

  KRString fromID() const { return fromID_.get(); }
  void setFromID(KRString fromID) { fromID_.set(std::move(fromID)); }

  /// Always `KRTrashAddressBookID`.
  KRString addressBookID() const override { return KRTrashAddressBookID; }

  KRText archiveClassName() const override;
  /// A value under the name of each property that has one that can be archived, then "fromID", and last "ID", without
  /// which a record read back would be another person.
  void encodeWithCoder(KRKeyedArchiver& coder) const override;
  /// Written form: `initWithCoder:`.
  static KRRef<KRObject> decode(KRKeyedUnarchiver& coder);

 private:
  KRAtomic<KRString> fromID_;
};
