#pragma once

#include <string>
#include <string_view>

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
  /// The ID of a book of that file, and its name.
  static KRString IDForFile(KRText path);
  static KRString nameForFile(KRText path);

  /// Adds the contacts of a file, or those that standard input brings, behind the others. After a failure the contacts
  /// read before it are in the book.
  KRResult<Summary> addFile(KRText path, const KRVCardNoteSink& notes = {});
  KRResult<Summary> addStandardInput(const KRVCardNoteSink& notes = {});
  /// Adds the contacts of a text.
  Summary addBytes(std::string_view bytes, const KRVCardNoteSink& notes = {});

  /// What the file that was added last held, also when reading it failed.
  const Summary& lastSummary() const noexcept { return last_; }

 private:
  KRResult<Summary> addFrom(KRFileReader& file, const KRVCardNoteSink& notes);
  KRVCardReader::PersonSink sink();
  Summary summaryOf(const KRVCardReader& reader, bool isEmpty);

  Summary last_;
};
