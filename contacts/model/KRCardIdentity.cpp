#include "contacts/model/KRCardIdentity.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <memory>

#include "contacts/model/KRCardUnfolding.h"
#include "platform/KRBytes.h"
#include "platform/KRPrefetch.h"

namespace {

/// Cards up to this size are unfolded to the stack.
constexpr size_t kNear = 2048;
constexpr size_t kNearRoom = kNear + kKRUnfoldingRoom;
/// How many of them are unfolded before any is read.
constexpr size_t kAtOnce = 16;

/// The number in sixteen hexadecimal digits.
void writeHex(uint64_t number, char* to) noexcept {
  constexpr uint64_t kOnes = krWordOf(1);
  for (const uint64_t half : {number >> 32U, number & 0xFFFFFFFFU}) {
    // Each digit to a byte of its own, the last one to the lowest.
    uint64_t digits = (half | half << 16U) & 0x0000FFFF0000FFFFU;
    digits = (digits | digits << 8U) & 0x00FF00FF00FF00FFU;
    digits = (digits | digits << 4U) & 0x0F0F0F0F0F0F0F0FU;
    const uint64_t areLetters = (digits + 6 * kOnes) >> 4U & kOnes;
    digits += '0' * kOnes + areLetters * ('a' - '0' - 10);
    digits = __builtin_bswap64(digits);
    std::memcpy(to, &digits, sizeof digits);
    to += sizeof digits;
  }
}

/// The high and the low half of a product, folded together.
uint64_t multiplyFold(uint64_t a, uint64_t b) noexcept {
  __extension__ using Wide = unsigned __int128;
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<uint64_t>(product >> 64U) ^ static_cast<uint64_t>(product);
}

/// The steps from a text to its identifier, a word of it at a time.
class Steps {
 public:
  Steps() noexcept = default;
  /// The text has eight zeros behind it.
  Steps(const char* text, size_t size) noexcept : text_(text), size_(size), a_(kFirst ^ size), b_(kSecond + size) {}

  size_t left() const noexcept { return (size_ + 7 - at_) / 8; }
  void take() noexcept {
    const uint64_t word = krLoadWord(text_ + at_);
    a_ = multiplyFold(a_ ^ word, kSecond) + at_;
    b_ = multiplyFold(b_ + word, kFirst) ^ (b_ << 7U);
    at_ += sizeof word;
  }
  /// Takes all that are left.
  void finish(KRCardIdentity& identity) noexcept {
    for (size_t count = left(); count != 0; --count) take();
    const uint64_t a = multiplyFold(a_ ^ b_, kFirst);
    const uint64_t b = multiplyFold(b_ ^ (a >> 1U), kSecond);
    writeHex(a, identity.digits.data());
    writeHex(b, identity.digits.data() + 16);
  }

 private:
  // The numbers are fixed for ever: identifiers are kept by people's other programs and by their trash.
  static constexpr uint64_t kFirst = 0x9e3779b97f4a7c15U;
  static constexpr uint64_t kSecond = 0xc2b2ae3d27d4eb4fU;

  const char* text_ = nullptr;
  size_t size_ = 0;
  size_t at_ = 0;
  uint64_t a_ = 0;
  uint64_t b_ = 0;
};

/// A text that is unfolded, and where its identifier goes.
struct Unfolded {
  const char* text;
  size_t size;
  KRCardIdentity* identity;

  Steps steps() const noexcept { return {text, size}; }
};

/// Three texts at a time, each in the place of one that is done.
void readAll(std::span<const Unfolded> texts) noexcept {
  constexpr size_t kLanes = 3;
  std::array<Steps, kLanes> lanes;
  std::array<KRCardIdentity*, kLanes> identities{};
  size_t next = 0;
  for (size_t i = 0; i < kLanes; ++i) {
    if (next == texts.size()) break;
    lanes[i] = texts[next].steps();
    identities[i] = texts[next++].identity;
  }
  while (next < texts.size()) {
    // In variables of their own, they stay in registers.
    Steps one = lanes[0];
    Steps two = lanes[1];
    Steps three = lanes[2];
    for (size_t count = std::min({one.left(), two.left(), three.left()}); count != 0; --count) {
      one.take();
      two.take();
      three.take();
    }
    lanes = {one, two, three};
    for (size_t i = 0; i < kLanes && next < texts.size(); ++i) {
      if (lanes[i].left() != 0) continue;
      lanes[i].finish(*identities[i]);
      lanes[i] = texts[next].steps();
      identities[i] = texts[next++].identity;
    }
  }
  for (size_t i = 0; i < kLanes; ++i) {
    if (identities[i] != nullptr) lanes[i].finish(*identities[i]);
  }
}

/// Asks the processor for a card while those before it are read.
void prefetch(std::string_view card) noexcept {
  krPrefetchLines(card.data(), std::min(card.size(), kNear));
}

void readFar(std::string_view card, KRCardIdentity& identity) {
  const auto room = std::make_unique_for_overwrite<char[]>(card.size() + kKRUnfoldingRoom);
  const size_t size = krUnfoldCard(card, room.get());
  Steps(room.get(), size).finish(identity);
}

}  // namespace

KRString krCardIdentity(std::string_view card) {
  KRCardIdentity identity;
  krCardIdentities({&card, 1}, {&identity, 1});
  return KRString::trusted(identity.text().view());
}

void krCardIdentities(std::span<const std::string_view> cards, std::span<KRCardIdentity> identities) {
  std::array<char, kAtOnce * kNearRoom> room;
  std::array<Unfolded, kAtOnce> texts;
  for (size_t first = 0; first < cards.size(); first += kAtOnce) {
    size_t count = 0;
    char* to = room.data();
    for (size_t i = first; i < std::min(first + kAtOnce, cards.size()); ++i) {
      if (i + kAtOnce < cards.size()) prefetch(cards[i + kAtOnce]);
      if (cards[i].size() > kNear) {
        readFar(cards[i], identities[i]);
        continue;
      }
      const size_t size = krUnfoldCard(cards[i], to);
      texts[count++] = {to, size, &identities[i]};
      to += size + sizeof(uint64_t);
    }
    readAll(std::span(texts).first(count));
  }
}
