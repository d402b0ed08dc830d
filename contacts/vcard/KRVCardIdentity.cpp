#include "contacts/vcard/KRVCardIdentity.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <memory>

#include "platform/KRBytes.h"

namespace {

/// The card with its folds undone and its line ends as line feeds, without empty lines and the last line's end. In room
/// of its own, with eight zeros behind the text, so that it can be read by whole words.
class Unfolded {
 public:
  explicit Unfolded(std::string_view card) {
    // No line grows, and the last may get the line feed that it does not have.
    const size_t room = card.size() + 1 + sizeof(uint64_t);
    if (room > near_.size()) {
      far_ = std::make_unique<char[]>(room);
      text_ = far_.get();
    }
    char* to = text_;
    const char* at = card.data();
    const char* const end = at + card.size();
    while (at != end) {
      copyLine(at, end, to);
      while (at != end && *at == '\r') ++at;
      if (at != end && *at == '\n') ++at;
      if (at != end && (*at == ' ' || *at == '\t')) {
        ++at;
      } else if (to != text_ && to[-1] != '\n') {
        *to++ = '\n';
      }
    }
    while (to != text_ && to[-1] == '\n') --to;
    size_ = static_cast<size_t>(to - text_);
    std::memset(to, 0, sizeof(uint64_t));
  }
  Unfolded(const Unfolded&) = delete;
  Unfolded& operator=(const Unfolded&) = delete;

  size_t size() const noexcept { return size_; }
  /// Eight bytes as a number, the first the lowest; missing ones are zero.
  uint64_t wordAt(size_t at) const noexcept { return krLoadWord(text_ + at); }

 private:
  /// Copies all before the next line end and leaves `at` there, or at the end. May write zeros or more of the text
  /// behind what it copies, within the room.
  static void copyLine(const char*& at, const char* end, char*& to) noexcept {
    constexpr uint64_t kBlanks = krWordOf(' ');
    constexpr uint64_t kHigh = krWordOf('\x80');
    while (end - at >= 8) {
      const uint64_t word = krLoadWord(at);
      std::memcpy(to, &word, sizeof word);
      // Line ends are below the blank. The lowest bit that is set is right; those above it may not be.
      const uint64_t controls = (word - kBlanks) & ~word & kHigh;
      const int count = controls == 0 ? 8 : std::countr_zero(controls) / 8;
      at += count;
      to += count;
      if (controls == 0) continue;
      if (*at == '\n' || *at == '\r') return;
      *to++ = *at++;
    }
    while (at != end && *at != '\n' && *at != '\r') *to++ = *at++;
  }

  std::array<char, 2048> near_;
  std::unique_ptr<char[]> far_;
  char* text_ = near_.data();
  size_t size_ = 0;
};

/// The high and the low half of a product, folded together.
uint64_t multiplyFold(uint64_t a, uint64_t b) noexcept {
  __extension__ using Wide = unsigned __int128;
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<uint64_t>(product >> 64U) ^ static_cast<uint64_t>(product);
}

/// The number in sixteen hexadecimal digits.
void writeHex(uint64_t number, char* to) noexcept {
  for (size_t i = 16; i > 0; --i, number >>= 4U) to[i - 1] = "0123456789abcdef"[number & 15U];
}

}  // namespace

KRString krCardIdentity(std::string_view card) {
  // The numbers are fixed for ever: identifiers are kept by people's other programs and by their trash.
  constexpr uint64_t kFirst = 0x9e3779b97f4a7c15U;
  constexpr uint64_t kSecond = 0xc2b2ae3d27d4eb4fU;
  const Unfolded text(card);
  uint64_t a = kFirst ^ text.size();
  uint64_t b = kSecond + text.size();
  for (size_t at = 0; at < text.size(); at += 8) {
    const uint64_t word = text.wordAt(at);
    a = multiplyFold(a ^ word, kSecond) + at;
    b = multiplyFold(b + word, kFirst) ^ (b << 7U);
  }
  a = multiplyFold(a ^ b, kFirst);
  b = multiplyFold(b ^ (a >> 1U), kSecond);
  std::array<char, 32> name;
  writeHex(a, name.data());
  writeHex(b, name.data() + 16);
  return KRString::trusted(std::string_view(name.data(), name.size()));
}
