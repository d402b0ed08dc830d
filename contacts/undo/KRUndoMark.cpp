#include "contacts/undo/KRUndoMark.h"

#include <cstring>

namespace {

constexpr uint64_t kOdd = 0x9E3779B97F4A7C15ULL;

/// Every bit of the result depends on every bit of the number.
constexpr uint64_t spread(uint64_t number) noexcept {
  number = (number ^ number >> 30U) * 0xBF58476D1CE4E5B9ULL;
  number = (number ^ number >> 27U) * 0x94D049BB133111EBULL;
  return number ^ number >> 31U;
}

}  // namespace

uint64_t krUndoMark(std::string_view bytes) noexcept {
  uint64_t mark = spread(bytes.size() + kOdd);
  while (!bytes.empty()) {
    uint64_t word = 0;
    const size_t size = bytes.size() < sizeof word ? bytes.size() : sizeof word;
    std::memcpy(&word, bytes.data(), size);
    mark = (mark ^ word) * kOdd;
    mark ^= mark >> 32U;
    bytes.remove_prefix(size);
  }
  return spread(mark);
}

uint64_t krUndoMark(uint64_t first, uint64_t second) noexcept {
  return spread(spread(first + kOdd) ^ (second + kOdd * 3));
}
