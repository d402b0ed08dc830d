#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "contacts/vcard/KRVCardReader.h"
#include "platform/KRWorkAside.h"

/// Feeds a file to a reader and, where this thread may use two processors, has it read ahead on both. What the reader's
/// sinks are told, in which order and on which thread is the same as without; they are told of some megabytes later.
///
/// A piece of the file is read before those in front of it are done with, from where the last card in front of it seems
/// to end. Whether it does is known once they are: then what was found is taken, or else the piece is read as any
/// other.
///
/// One file, one thread.
class KRVCardReadAhead {
 public:
  /// `reader` is at the beginning of a file and stays alive. With one processor it is simply fed.
  explicit KRVCardReadAhead(KRVCardReader& reader, unsigned processors = KRWorkAside::processors());
  ~KRVCardReadAhead();
  KRVCardReadAhead(const KRVCardReadAhead&) = delete;
  KRVCardReadAhead& operator=(const KRVCardReadAhead&) = delete;

  /// Room for the reader's next block of the file. `feedRoom` takes the first `count` bytes that were put there; fewer
  /// than the block only at the end of the file.
  std::span<char> room();
  void feedRoom(size_t count);
  /// Has the reader hand out all that it has been fed.
  void catchUp();
  /// Ends the file.
  void finish();

  /// How many blocks were to be read ahead, and were or were not where cards end and begin; for tests.
  size_t takenCount() const noexcept { return taken_; }
  size_t missedCount() const noexcept { return missed_; }

 private:
  struct Piece;

  std::shared_ptr<Piece> newPiece();
  /// What of the bytes so far seems to belong to the next piece, if that can be told.
  std::optional<std::string_view> beginning() const noexcept;
  static void read(Piece& piece, KRVCardReader& scout);
  bool readAnother();
  /// Not in a file of which most would be read in vain.
  bool pays() const noexcept;
  void handOutFirst();

  KRVCardReader& reader_;
  const bool isAhead_;
  size_t taken_ = 0;
  size_t missed_ = 0;
  /// What the file's next bytes are put to, or null.
  std::shared_ptr<Piece> open_;
  /// What has been fed and is not handed out, in order.
  std::deque<std::shared_ptr<Piece>> pieces_;
  std::vector<std::shared_ptr<Piece>> spare_;
  KRVCardReader ownScout_{KRVCardReader::PersonSink()};
  KRVCardReader scoutAside_{KRVCardReader::PersonSink()};
  KRWorkAside aside_;
};
