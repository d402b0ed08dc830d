#include "platform/KRString.h"

#include <algorithm>
#include <limits>
#include <new>

#include "platform/KRBytes.h"

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

bool isContinuation(unsigned char byte) noexcept {
  return (byte & 0xC0U) == 0x80U;
}

/// The length of the well-formed sequence at the start of `bytes`, or 0. `skip` is how much of an ill-formed one counts
/// as one mistake (the maximal part of a sequence, at least one byte).
size_t sequenceLength(std::string_view bytes, size_t& skip) noexcept {
  const auto at = [&](size_t i) { return static_cast<unsigned char>(bytes[i]); };
  skip = 1;
  const unsigned char lead = at(0);
  if (lead < 0x80) return 1;
  if (lead < 0xC2 || lead > 0xF4) return 0;
  const size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  // The second byte's range rules out overlong forms, surrogates and what lies beyond U+10FFFF.
  const unsigned char low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  const unsigned char high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  for (size_t i = 1; i < length; ++i) {
    if (i >= bytes.size()) return 0;
    const bool fits = i == 1 ? at(1) >= low && at(1) <= high : isContinuation(at(i));
    if (!fits) return 0;
    skip = i + 1;
  }
  return length;
}

/// How many bytes from the start are plain ASCII, in steps of 32 and of eight.
size_t asciiPrefix(std::string_view bytes) noexcept {
  constexpr uint64_t kHigh = 0x8080808080808080U;
  size_t done = 0;
  for (; done + 32 <= bytes.size(); done += 32) {
    const char* at = bytes.data() + done;
    if (((krLoadWord(at) | krLoadWord(at + 8) | krLoadWord(at + 16) | krLoadWord(at + 24)) & kHigh) != 0) break;
  }
  for (; done + 8 <= bytes.size(); done += 8) {
    if ((krLoadWord(bytes.data() + done) & kHigh) != 0) break;
  }
  while (done < bytes.size() && static_cast<unsigned char>(bytes[done]) < 0x80) ++done;
  return done;
}

/// The length of the sequence at `place` when it is one of the usual ones of two or three bytes and well-formed, else
/// 0; for runs of letters beyond ASCII.
size_t usualSequence(std::string_view bytes, size_t place) noexcept {
  const auto at = [&](size_t i) { return static_cast<unsigned char>(bytes[place + i]); };
  const unsigned char lead = at(0);
  if (bytes.size() - place < 3) return 0;
  if (lead >= 0xC2 && lead < 0xE0) return isContinuation(at(1)) ? 2 : 0;
  const bool isPlain = lead > 0xE0 && lead < 0xF0 && lead != 0xED;
  return isPlain && isContinuation(at(1)) && isContinuation(at(2)) ? 3 : 0;
}

/// Where the first ill-formed sequence begins, or the size; `skip` as above.
size_t wellFormedPrefix(std::string_view bytes, size_t& skip) noexcept {
  size_t position = 0;
  while (true) {
    position += asciiPrefix(bytes.substr(position));
    while (position < bytes.size() && static_cast<unsigned char>(bytes[position]) >= 0x80) {
      size_t length = usualSequence(bytes, position);
      if (length == 0) length = sequenceLength(bytes.substr(position), skip);
      if (length == 0) return position;
      position += length;
    }
    if (position == bytes.size()) return position;
  }
}

}  // namespace

bool krIsWellFormed(std::string_view bytes) noexcept {
  size_t skip = 0;
  return wellFormedPrefix(bytes, skip) == bytes.size();
}

std::string krWellFormed(std::string_view bytes) {
  std::string result;
  result.reserve(bytes.size());
  while (true) {
    size_t skip = 0;
    const size_t good = wellFormedPrefix(bytes, skip);
    result.append(bytes.substr(0, good));
    if (good == bytes.size()) return result;
    result.append(kReplacement);
    bytes.remove_prefix(good + skip);
  }
}

KRString::KRString(std::string_view text) : literal_(nullptr) {
  *this = krIsWellFormed(text) ? trusted(text) : trusted(krWellFormed(text));
}

KRString::KRString(KRText text) : literal_(nullptr) {
  if (!text.isNothing()) *this = trusted(text.view());
}

KRString KRString::trusted(std::string_view text) {
  const KRText piece(text);
  return joined({&piece, 1});
}

KRString KRString::joined(std::span<const KRText> pieces) {
  size_t size = 0;
  for (const KRText piece : pieces) size += piece.size();
  if (size == 0) return literal("", 0);
  if (size > std::numeric_limits<uint32_t>::max()) throw std::bad_alloc();
  KRString string;
  string.slab_ = KRSlab::create(static_cast<uint32_t>(size));
  string.offset_ = 0;
  string.size_ = static_cast<uint32_t>(size);
  char* to = string.slab_->bytes();
  for (const KRText piece : pieces) to = std::copy_n(piece.data(), piece.size(), to);
  return string;
}

KRString KRString::slice(KRSlab* slab, uint32_t offset, uint32_t size) noexcept {
  KRString string;
  slab->retain();
  string.slab_ = slab;
  string.offset_ = offset;
  string.size_ = size;
  return string;
}

KRString krConcat(std::initializer_list<KRText> pieces) {
  return KRString::joined({pieces.begin(), pieces.size()});
}

KRString krFormat(KRText format, KRText argument) {
  constexpr std::string_view kPlace = "%@";
  const std::string_view whole = format.view();
  const size_t place = whole.find(kPlace);
  if (place == std::string_view::npos) return KRString(format);
  const KRText filled = argument.isNothing() ? KRText("(null)") : argument;
  return krConcat({whole.substr(0, place), filled, whole.substr(place + kPlace.size())});
}
