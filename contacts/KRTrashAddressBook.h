#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "contacts/KRTempPerson.h"
#include "contacts/KRTrashAddressBookID.h"
#include "contacts/model/ABPerson.h"
#include "contacts/model/KRAddressBook.h"
#include "platform/KRFileStamp.h"

/// The name of the file that keeps the trash.
inline constexpr KRString KRTrashFileName = "trashFile.data"_kr;

/// The trash: an address book of its own that keeps what fixes delete, in one file of the user's, and knows of each
/// person where it came from, so that a host can put it back.
///
/// Adding copies a person: the trash holds `KRTempPerson`s, oldest first; the same person may be in it several times.
/// Everything changes the list in memory only, until it is saved. The file is read once, when the book is made; what
/// others write to it later is not seen before the next save, which reads it again: what they added is in the file and
/// in this list then, and what they took out is in neither (`KRTrashMerge`).
///
/// Nothing is lost unseen: a damaged file is not overwritten by a save but first set aside, beside itself, under its
/// name with ".damaged-" and the date. One that may not be read is left as it is, and the save fails.
///
/// The file is a keyed archive whose root is the list of persons; it and its folder are for their owner only. One
/// thread at a time, the making of the shared one apart.
class KRTrashAddressBook : public KRAddressBook {
 public:
  /// The trash of the process, made on the first call and never destroyed. Safe against concurrent first calls.
  static KRTrashAddressBook* ShareTrashAddressBook();
  /// The user's folder for application support, or nothing.
  static KRString GetUserSupportSupportDirectory();
  /// In it, the folder named by the host's identifier ("(null)" for a host without one). Nothing without the former.
  static KRString AppSupportDirectory();
  /// Whether a path is given and is there or could be made, with the folders above it (written form:
  /// `CheckDirectory:`).
  static bool CheckDirectory(const KRString& path);
  /// The properties that the trash shows first.
  static const std::vector<const KRProperty*>& CommonProperty();

  /// Reads the file at `savePath` (written form: `init`); no persons when there is none or it cannot be read, which
  /// `load` tells.
  KRTrashAddressBook();

  /// The persons in the bytes of a trash's file, also of one that was set aside; nothing when they are damaged: no
  /// archive, or one of anything but a list of trashed persons.
  static std::optional<std::vector<KRRef<KRTempPerson>>> personsIn(std::string_view archive);

  /// The file in `AppSupportDirectory`, which is made if need be. Nothing when there is no such folder.
  KRString savePath() const;

  KRString kind() const override;
  KRString place() const override { return savePath(); }
  KRRef<KRData> logo1() const override;
  KRRef<KRData> logo2() const override;
  /// The library's image of that name; `type` is ignored (written form: `loadXCAImageWithName:type:`).
  KRRef<KRData> loadXCAImageWithName(const KRString& name, const KRString& type) const;
  /// The image in the file of that name and type ("png") among the library's resources, or nothing (written form:
  /// `loadImageWithName:type:`).
  KRRef<KRData> loadImageWithName(const KRString& name, const KRString& type) const;

  std::vector<const KRProperty*> commonProperty() override { return CommonProperty(); }

  /// Success, or why the file could not be read when the book was made; success again once it was saved.
  KRResult<void> load() override;
  /// Writes the list, joined with what others wrote since. The contract's own `save` says nothing when that fails, and
  /// the next one tries again. `NotAllowed` and other errors of a file that is there and cannot be read: nothing is
  /// changed then.
  KRResult<void> saveNow() override;
  bool isSavedFirst() const override { return true; }
  /// When others wrote the file since, nothing is taken out: a copy too many harms nobody.
  bool takeBack(KRAddressBook& book) override;

  /// A new, empty person in the trash.
  KRRef<IKRPerson> newPerson() override;
  /// Appends a trashed copy of the person; nothing for no person (written forms: `addPerson:`, `addPersons:`).
  void addPerson(IKRPerson* person) override;
  void addPersons(const std::vector<KRRef<IKRPerson>>& persons) override;
  void addPersons(const KRPersonArray& persons);
  /// The trashed copy, not added (written form: `trashPersonWithPerson:`): the `ID`, the very values of all standard
  /// properties, the book and, for a system record that is in groups, their identifiers; beside them the card that a
  /// record was read from. Nothing for no person.
  KRRef<KRTempPerson> trashPersonWithPerson(const IKRPerson* person) const;
  void clear() { persons_.removeAll(); }

  /// The book that the person came from, borrowed from the shared `KRAddressBookManager`; nothing when there is none,
  /// and for a person that is not of the trash (written form: `addressBookofPersonFrom:`).
  KRAddressBook* addressBookofPersonFrom(const IKRPerson* person) const;
  /// The identifiers of the groups that the person came from; nothing when there were none, and for a person that is
  /// not of the trash (written form: `groupIDs:`).
  std::optional<KRStringList> groupIDs(const IKRPerson* person) const;

  /// The person to put back: a new record, in no book yet, with the identifier and the values of the trashed one and
  /// every line of its card that no property shows. Where no value was changed after the card was read, the record's
  /// card is that very card. Nothing for a person that is not of the trash.
  ///
  /// To restore: add it to its book and groups, save that book, then take the trashed person out (`removePersons`) and
  /// save the trash.
  static KRRef<ABPerson> restoredPerson(const IKRPerson* person);

 private:
  using Persons = std::vector<KRRef<IKRPerson>>;

  KRResult<void> read();
  /// Joins the list with what the file holds now; a damaged file is set aside.
  KRResult<void> merge(const KRString& path, Persons& persons);
  /// Writes the list, joined with the file's where others wrote since. How many persons the file held before.
  KRResult<size_t> write(Persons persons);
  /// Makes these bytes the file, which has these persons. The lock of the folder is held.
  KRResult<void> put(const KRString& path, std::string_view bytes, Persons persons);
  /// Makes the file byte for byte what it was before the last save; `NotFound` when that is not known.
  KRResult<void> putBack(Persons persons);
  /// Removes the file, when nobody has written it since.
  KRResult<void> removeFile();

  /// The file as it was when it was read or written last; nothing when there was none.
  std::optional<KRFileStamp> stamp_;
  /// Whether the last write made it.
  bool isFileNew_ = false;
  /// The persons in it then.
  Persons inFile_;
  /// How many there were before the last save, and how many writes were taken note of then.
  size_t countBefore_ = 0;
  int64_t writesBefore_ = 0;
  /// Those of them that the last save put there.
  Persons lastAdded_;
  /// What others had put there when this process last wrote it; only while it saves.
  std::vector<KRRef<KRTempPerson>> theirs_;
  /// Why the file could not be read.
  KRResult<void> reading_;
};
