#include "contacts/vcard/KRVCardReadAhead.h"

#include <string.h>

#include <atomic>
#include <cstring>
#include <new>
#include <utility>

#include "contacts/vcard/KRVCardStretch.h"
#include "platform/KRBuffer.h"

namespace {

/// How many pieces are read ahead at most.
constexpr size_t kMostPieces = 4;

/// Where the last card ends that can be told to be whole: its last line is, and something follows. `npos` for none.
size_t lastEnd(std::string_view text) noexcept {
  constexpr std::string_view kName = "END";
  constexpr std::string_view kValue = "VCARD";
  // Pictures have no colons.
  for (size_t size = text.size(); size != 0;) {
    const auto* const colon = static_cast<const char*>(memrchr(text.data(), ':', size));
    if (colon == nullptr) break;
    size = static_cast<size_t>(colon - text.data());
    if (!text.substr(0, size).ends_with(kName) || !text.substr(size + 1).starts_with(kValue)) continue;
    const size_t lineEnd = size + 1 + kValue.size();
    const size_t next = text.find_first_not_of("\r\n", lineEnd);
    if (next != std::string_view::npos && next != lineEnd) return next;
  }
  return std::string_view::npos;
}

}  // namespace

struct KRVCardReadAhead::Piece {
  enum State : int {
    /// Nobody reads it ahead.
    Idle,
    Waiting,
    /// Somebody reads it.
    Taken,
    Read,
  };

  bool takeIt() noexcept {
    int expected = Waiting;
    return state.compare_exchange_strong(expected, Taken, std::memory_order_acq_rel);
  }
  void set(State value) noexcept {
    state.store(value, std::memory_order_release);
    state.notify_all();
  }
  /// What the file brought with it.
  std::string_view fresh() const noexcept { return bytes.view().substr(stretch.known); }

  KRBuffer bytes;
  /// Whether it is known where it seems to begin.
  bool isReadable = false;
  KRVCardStretch stretch;
  std::atomic<int> state{Idle};
};

KRVCardReadAhead::KRVCardReadAhead(KRVCardReader& reader, unsigned processors)
    : reader_(reader), isAhead_(processors > 1), aside_(processors) {}

KRVCardReadAhead::~KRVCardReadAhead() {
  for (const std::shared_ptr<Piece>& piece : pieces_) piece->takeIt();
}

std::shared_ptr<KRVCardReadAhead::Piece> KRVCardReadAhead::newPiece() {
  if (spare_.empty()) return std::make_shared<Piece>();
  std::shared_ptr<Piece> piece = std::move(spare_.back());
  spare_.pop_back();
  return piece;
}

std::optional<std::string_view> KRVCardReadAhead::beginning() const noexcept {
  std::string_view begun = reader_.left();
  if (!pieces_.empty()) {
    begun = pieces_.back()->bytes.view();
    const size_t end = lastEnd(begun);
    if (end == std::string_view::npos) return std::nullopt;
    begun.remove_prefix(end);
  }
  return begun.size() <= reader_.block() ? std::optional(begun) : std::nullopt;
}

std::span<char> KRVCardReadAhead::room() {
  const size_t block = reader_.block();
  // The first piece tells how the file is to be read.
  if (!isAhead_ || !pays() || !reader_.readsInPieces()) {
    catchUp();
    return reader_.room(block).first(block);
  }
  open_ = newPiece();
  const std::optional<std::string_view> begun = beginning();
  const size_t known = begun ? begun->size() : 0;
  open_->isReadable = begun.has_value();
  open_->bytes.setSize(0);
  if (!open_->bytes.reserve(known + block)) throw std::bad_alloc();
  if (known != 0) std::memcpy(open_->bytes.data(), begun->data(), known);
  open_->stretch.known = known;
  return {open_->bytes.data() + known, block};
}

void KRVCardReadAhead::feedRoom(size_t count) {
  if (open_ == nullptr) return reader_.feedRoom(count);
  const std::shared_ptr<Piece> piece = pieces_.emplace_back(std::move(open_));
  piece->bytes.setSize(piece->stretch.known + count);
  // The end of a file is looked at when it is known to be that.
  if (piece->isReadable && count == reader_.block()) {
    piece->stretch.text = piece->bytes;
    piece->stretch.charset = reader_.legacyCharset();
    piece->set(Piece::Waiting);
    aside_.add([this, piece] {
      if (piece->takeIt()) read(*piece, scoutAside_);
    });
  }
  if (pieces_.size() == kMostPieces) handOutFirst();
}

void KRVCardReadAhead::read(Piece& piece, KRVCardReader& scout) {
  try {
    scout.readStretch(piece.stretch);
    piece.set(Piece::Read);
  } catch (...) {
    // For want of memory, mostly. The reader, which now reads the piece itself, meets it again if it is still there; a
    // piece that was left taken would be waited for without end.
    piece.set(Piece::Idle);
  }
}

/// Reads a piece for which nobody has had time.
bool KRVCardReadAhead::readAnother() {
  for (const std::shared_ptr<Piece>& piece : pieces_) {
    if (!piece->takeIt()) continue;
    read(*piece, ownScout_);
    return true;
  }
  return false;
}

void KRVCardReadAhead::handOutFirst() {
  const std::shared_ptr<Piece> piece = std::move(pieces_.front());
  pieces_.pop_front();
  const bool isOffered = piece->state.load(std::memory_order_acquire) != Piece::Idle;
  if (piece->takeIt()) {
    if (reader_.canTake(piece->stretch)) {
      read(*piece, ownScout_);
    } else {
      piece->set(Piece::Idle);
    }
  }
  while (piece->state.load(std::memory_order_acquire) == Piece::Taken) {
    if (!readAnother()) piece->state.wait(Piece::Taken, std::memory_order_acquire);
  }
  const bool isRead = piece->state.load(std::memory_order_acquire) == Piece::Read;
  if (isRead && reader_.canTake(piece->stretch)) {
    ++taken_;
    reader_.take(piece->stretch);
  } else {
    if (isOffered) ++missed_;
    reader_.feed(piece->fresh());
  }
  piece->set(Piece::Idle);
  spare_.push_back(piece);
}

bool KRVCardReadAhead::pays() const noexcept {
  return missed_ <= taken_ + 2 * kMostPieces;
}

void KRVCardReadAhead::catchUp() {
  while (!pieces_.empty()) handOutFirst();
}

void KRVCardReadAhead::finish() {
  catchUp();
  reader_.finish();
}
