#include "platform/KRHash.h"

#include <atomic>
#include <bit>
#include <cstring>
#include <random>

namespace {

static_assert(std::endian::native == std::endian::little, "the byte loads below assume little-endian order");

constexpr uint64_t kFirst = 0x9e3779b97f4a7c15U;
constexpr uint64_t kSecond = 0xd6e8feb86659fd93U;

std::atomic<uint64_t> processSeed{0};

uint64_t drawSeed() noexcept {
  std::random_device device;
  const uint64_t drawn = (uint64_t{device()} << 32U) | device();
  return drawn == 0 ? kFirst : drawn;
}

uint64_t multiplyFold(uint64_t a, uint64_t b) noexcept {
  __extension__ using Wide = unsigned __int128;
  const Wide product = Wide{a} * b;
  return static_cast<uint64_t>(product) ^ static_cast<uint64_t>(product >> 64U);
}

uint64_t load8(const unsigned char* from) noexcept {
  uint64_t word;
  std::memcpy(&word, from, sizeof word);
  return word;
}

uint64_t load4(const unsigned char* from) noexcept {
  uint32_t word;
  std::memcpy(&word, from, sizeof word);
  return word;
}

/// The last one to sixteen bytes as two words; overlapping loads, so that every byte counts.
void loadTail(const unsigned char* from, size_t size, uint64_t& low, uint64_t& high) noexcept {
  if (size >= 8) {
    low = load8(from);
    high = load8(from + size - 8);
  } else if (size >= 4) {
    low = load4(from);
    high = load4(from + size - 4);
  } else {
    low = size == 0 ? 0 : (uint64_t{from[0]} << 16U) | (uint64_t{from[size / 2]} << 8U) | from[size - 1];
    high = 0;
  }
}

}  // namespace

uint64_t krHashSeed() noexcept {
  uint64_t seed = processSeed.load(std::memory_order_relaxed);
  if (seed != 0) return seed;
  const uint64_t drawn = drawSeed();
  return processSeed.compare_exchange_strong(seed, drawn, std::memory_order_relaxed) ? drawn : seed;
}

void krSetHashSeed(uint64_t seed) noexcept {
  processSeed.store(seed == 0 ? kFirst : seed, std::memory_order_relaxed);
}

uint64_t krHashBytes(const void* bytes, size_t size) noexcept {
  const auto* from = static_cast<const unsigned char*>(bytes);
  const uint64_t seed = krHashSeed();
  uint64_t running = seed ^ multiplyFold(seed ^ kFirst, size ^ kSecond);
  size_t left = size;
  for (; left > 16; left -= 16, from += 16)
    running = multiplyFold(load8(from) ^ kFirst ^ seed, load8(from + 8) ^ running);
  uint64_t low;
  uint64_t high;
  loadTail(from, left, low, high);
  return multiplyFold(low ^ kSecond ^ seed, high ^ running ^ kFirst);
}

uint64_t krHashMix(uint64_t running, uint64_t next) noexcept {
  return multiplyFold(running ^ kFirst, next ^ kSecond ^ krHashSeed());
}
