#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "contacts/model/ABPerson.h"
#include "contacts/vcard/KRVCardLines.h"
#include "contacts/vcard/KRVCardNote.h"
#include "contacts/vcard/KRVCardParser.h"
#include "platform/KRBuffer.h"
#include "platform/KRTextDecoding.h"

class KRAddressBook;
struct KRVCardStretch;

/// Where a card stands in what was read.
struct KRVCardPlace {
  enum class Kind : uint8_t {
    Contact,
    Group,
    /// Passed over: it has no end, or is too large.
    Lost,
  };
  Kind kind = Kind::Contact;
  /// The first byte and the count of them, from BEGIN to behind the line end of END; counted from the start of the
  /// bytes, in UTF-16 and UTF-32 from the start of the text as UTF-8 without its mark.
  size_t offset = 0;
  size_t size = 0;
  /// Number of its first line, and of the card, from 1.
  size_t line = 0;
  size_t number = 0;
  /// Why it was lost.
  KRVCardReason reason = KRVCardReason::CutOff;
};

/// Reads vCards of all versions from a stream of bytes and hands out a record for each contact, in the file's order.
///
/// It takes what people have: any line ends, upper and lower case, text before, between and behind the cards, any
/// encoding (UTF-16 and UTF-32 are read as a whole, anything else where it stands), values that are not quite right.
/// Cards inside cards, cards of groups and cards without an end are no contacts. Nothing is ever fetched.
///
/// Bytes may be given in pieces of any size; a few megabytes are kept at a time, or the largest card. Not locked: one
/// thread at a time.
class KRVCardReader {
 public:
  using PersonSink = std::function<void(KRRef<ABPerson>)>;
  static constexpr size_t kBlock = size_t{1} << 20U;

  /// The sinks are called from `feed` and `finish`. What was passed over is not told when there is no note sink.
  /// `block` is how many bytes are gathered before they are looked at; a test sets it to one.
  explicit KRVCardReader(PersonSink persons, KRVCardNoteSink notes = {}, size_t block = kBlock);

  using PlaceSink = std::function<void(const KRVCardPlace&)>;
  /// Called for every card, before the person sink is.
  void setPlaceSink(PlaceSink places) { places_ = std::move(places); }

  /// Where the cards of groups go, each as a record of what it says; they go nowhere unless this is set.
  void setGroups(PersonSink groups) { groups_ = std::move(groups); }

  /// Takes the next bytes of the file.
  void feed(std::string_view bytes);
  /// Room for at least `size` of the next bytes, so that a file is read straight to where they are looked at; valid
  /// until the next call. `feedRoom` takes the first `count` bytes that were put there.
  std::span<char> room(size_t size);
  void feedRoom(size_t count);
  /// Ends the file; the next `feed` starts another one.
  void finish();

  /// Reads a whole file that is in memory already, without a copy of it.
  void read(std::string_view bytes);
  /// The same for text whose encoding is known to be UTF-8, without a mark.
  void readText(std::string_view utf8);
  /// The same into a book.
  static void read(std::string_view bytes, KRAddressBook& book, KRVCardNoteSink notes = {});
  /// The person of the card with which the text starts, or nothing when it starts with none or with that of a group.
  static KRRef<ABPerson> readOne(std::string_view text);

  // For reading ahead (`KRVCardReadAhead`).

  size_t block() const noexcept { return block_; }
  /// The bytes that were fed and are not done with.
  std::string_view left() const noexcept { return buffer_.view(); }
  /// Whether a file is being read that is in an encoding which is read where it stands.
  bool readsInPieces() const noexcept;
  /// Finds what stands in a stretch of some file; no sink is called.
  void readStretch(KRVCardStretch& stretch);
  /// Whether the stretch begins just where this reader is, and what was assumed of it is so: then feeding what follows
  /// `known` in its text would find the same.
  bool canTake(const KRVCardStretch& stretch) const noexcept;
  /// Instead of feeding that, hands out what was found, and has `left` to go on with. The records are taken out of the
  /// stretch.
  void take(KRVCardStretch& stretch);

  /// What the files so far held: contacts, cards that were lost, cards of groups, and notes (lost cards among them).
  struct Counts {
    size_t persons = 0;
    size_t lostCards = 0;
    size_t groups = 0;
    size_t notes = 0;
  };
  const Counts& counts() const noexcept { return counts_; }
  /// How the last file was encoded, and the name of the character set in which the values were that are not UTF-8, or
  /// empty when there were none.
  KRTextEncoding encoding() const noexcept { return encoding_; }
  const std::string& legacyCharset() const noexcept { return parser_.documentCharset(); }

 private:
  void startFile(std::string_view start);
  void runBuffer();
  /// Ends a run: these bytes are left, which stand in the buffer or elsewhere.
  void keep(std::string_view rest);
  /// Reads whole cards; returns how many bytes are done with.
  size_t run(std::string_view text, bool isWhole);
  const char* takeOutside(const KRVCardLine& line);
  bool takeInside(const KRVCardLine& line);
  void startCard(const char* at, size_t line);
  void endCard(const char* end);
  void handOutContact(KRCardRecord record);
  void handOutGroup(KRCardRecord record);
  void note(KRVCardReason reason, size_t line, bool isCardLost);
  void tellPlace(KRVCardPlace::Kind kind, const char* end, KRVCardReason reason = KRVCardReason::CutOff);

  PersonSink persons_;
  PersonSink groups_;
  KRVCardNoteSink notes_;
  PlaceSink places_;
  /// Where everything goes instead while a stretch is read.
  KRVCardStretch* stretch_ = nullptr;
  Counts counts_;
  KRVCardLines lines_;
  KRVCardParser parser_;

  /// Bytes that are not read yet, and how many there must be before it is worth trying.
  KRBuffer buffer_;
  size_t block_;
  size_t enough_;
  bool isStarted_ = false;
  KRTextEncoding encoding_ = KRTextEncoding::Utf8;
  /// How many bytes stand before the text that is looked at, and where that begins.
  size_t passed_ = 0;
  const char* text_ = nullptr;
  size_t lineNumber_ = 1;
  size_t cardNumber_ = 0;
  bool isInJunk_ = false;

  // The card that is being read.
  const char* card_ = nullptr;
  size_t cardLine_ = 0;
  /// How deep in cards inside it, and whether the line before this one opens one.
  size_t depth_ = 0;
  bool isAfterAgent_ = false;
};
