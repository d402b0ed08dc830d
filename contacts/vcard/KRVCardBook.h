#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "contacts/model/KRAddressBook.h"
#include "contacts/vcard/KRVCardReader.h"
#include "platform/KRResult.h"

class KRFileReader;

/// An address book of the contacts in one or several vCard files, in memory. Files are read once and not held; nothing
/// is written back.
class KRVCardBook : public KRAddressBook {
 public:
  /// What a file held.
  struct Summary {
    size_t persons = 0;
    size_t lostCards = 0;
    size_t groups = 0;
    size_t notes = 0;
    /// Whether the file has no bytes at all, or nothing but a byte-order mark and white space.
    bool isEmpty = true;
    KRTextEncoding encoding = KRTextEncoding::Utf8;
    /// The character set of the values that are not UTF-8, or empty.
    std::string legacyCharset;
  };

  /// An empty book.
  KRVCardBook(KRString ID, KRString name) : KRAddressBook(std::move(ID), std::move(name)) {}

  /// A book of one file: its ID is made from the file's whole path, its name from the file's name. A file without cards
  /// gives an empty book; a failure is one of the file system's.
  static KRResult<KRRef<KRVCardBook>> open(KRText path, const KRVCardNoteSink& notes = {});
  /// The ID of a book of that file, the same through whichever link, and its name.
  static KRString IDForFile(KRText path);
  /// The path in such an ID; nothing for any other.
  static KRString fileOfID(KRText ID);
  static KRString nameForFile(KRText path);

  KRString kind() const override;
  /// The file that `open` read; nothing for other books.
  KRString place() const override { return place_; }

  /// Adds the contacts of a file, or those that standard input brings, behind the others. After a failure the contacts
  /// read before it are in the book.
  KRResult<Summary> addFile(KRText path, const KRVCardNoteSink& notes = {});
  KRResult<Summary> addStandardInput(const KRVCardNoteSink& notes = {});
  /// Adds the contacts of a text.
  Summary addBytes(std::string_view bytes, const KRVCardNoteSink& notes = {});

  /// The cards of groups that the files held, in their order. They are no contacts; whoever writes the files anew
  /// carries them along.
  const std::vector<KRRef<ABPerson>>& groupCards() const noexcept { return groupCards_; }

  /// What the file that was added last held, also when reading it failed.
  const Summary& lastSummary() const noexcept { return last_; }

 private:
  KRResult<Summary> addFrom(KRFileReader& file, const KRVCardNoteSink& notes);
  KRVCardReader::PersonSink sink();
  KRVCardReader::PersonSink groupSink();
  Summary summaryOf(const KRVCardReader& reader, bool isEmpty);

  KRString place_;
  Summary last_;
  std::vector<KRRef<ABPerson>> groupCards_;
};
