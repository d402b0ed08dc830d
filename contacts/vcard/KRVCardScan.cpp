#include "contacts/vcard/KRVCardScan.h"

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace {

/// Goes on byte by byte.
KRVCardScan scanRest(const char* at, const char* end, KRVCardScan scan) noexcept {
  for (; at != end; ++at) {
    if (*at == '\n' || *at == '\r') {
      scan.end = at;
      return scan;
    }
    if (*at == ':' && scan.colon == nullptr) scan.colon = at;
    if (static_cast<unsigned char>(*at) >= 0x80) scan.flags |= KRVCardScan::High;
    if (*at == '\\') scan.flags |= KRVCardScan::Backslash;
    if (*at == '\x1B') scan.flags |= KRVCardScan::Escape;
    if (*at == '"') scan.flags |= KRVCardScan::Quote;
  }
  return scan;
}

KRVCardScan scanBytes(const char* begin, const char* end) noexcept {
  return scanRest(begin, end, {end, nullptr, 0});
}

#if defined(__x86_64__)

/// What a special byte is.
inline KRVCardScan::Flag flagOf(char byte) noexcept {
  return byte == '\\' ? KRVCardScan::Backslash : byte == '\x1B' ? KRVCardScan::Escape : KRVCardScan::Quote;
}

/// What a block of bytes holds: a bit for each byte, the first the lowest.
struct Found {
  uint32_t ends;
  uint32_t colons;
  uint32_t high;
  /// Backslashes, escapes and quotes: rare, so that they are told apart only where there are any.
  uint32_t special;
};

/// Takes a block over into the scan; whether the line ends in it.
inline bool take(const char* at, const Found& found, KRVCardScan& scan) noexcept {
  // The bits of the bytes before the line end, all of them when there is none.
  const uint32_t before = (found.ends & (0U - found.ends)) - 1U;
  const uint32_t colons = found.colons & before;
  if (scan.colon == nullptr && colons != 0) scan.colon = at + std::countr_zero(colons);
  if (((found.high | found.special) & before) != 0) {
    if ((found.high & before) != 0) scan.flags |= KRVCardScan::High;
    for (uint32_t special = found.special & before; special != 0; special &= special - 1) {
      scan.flags |= flagOf(at[std::countr_zero(special)]);
    }
  }
  if (found.ends == 0) return false;
  scan.end = at + std::countr_zero(found.ends);
  return true;
}

/// Goes on sixteen bytes at a time.
KRVCardScan scanRestBy16(const char* at, const char* end, KRVCardScan scan) noexcept {
  for (; end - at >= 16; at += 16) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
    const auto equal = [&](char byte) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(byte)); };
    const auto bits = [](__m128i mask) { return static_cast<uint32_t>(_mm_movemask_epi8(mask)); };
    const Found found{bits(_mm_or_si128(equal('\n'), equal('\r'))), bits(equal(':')), bits(bytes),
                      bits(_mm_or_si128(_mm_or_si128(equal('\\'), equal('\x1B')), equal('"')))};
    if (take(at, found, scan)) return scan;
  }
  return scanRest(at, end, scan);
}

KRVCardScan scanBy16(const char* begin, const char* end) noexcept {
  return scanRestBy16(begin, end, {end, nullptr, 0});
}

[[gnu::target("avx2")]] inline __m256i load(const char* at) noexcept {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at));
}

[[gnu::target("avx2")]] inline __m256i equal(__m256i bytes, char byte) noexcept {
  return _mm256_cmpeq_epi8(bytes, _mm256_set1_epi8(byte));
}

/// A bit for each byte of both whose highest bit is set, the first the lowest.
[[gnu::target("avx2")]] inline uint64_t bits(__m256i first, __m256i second) noexcept {
  const auto low = static_cast<uint32_t>(_mm256_movemask_epi8(first));
  const auto high = static_cast<uint32_t>(_mm256_movemask_epi8(second));
  return low | uint64_t{high} << 32U;
}

/// So many bytes at a time that few lines take a second look: whether they do is hard to guess, and a wrong guess costs
/// as much as the look.
[[gnu::target("avx2")]] KRVCardScan scanBy64(const char* begin, const char* end) noexcept {
  // Line ends and special bytes differ in their low halves. Each stands in the table at the place of its own, so that a
  // byte is one of them when it is what the table has at the place of its low half; the other places hold what no byte
  // of that low half is.
  const __m128i row = _mm_setr_epi8(1, 0, '"', 0, 0, 0, 0, 0, 0, 0, '\n', '\x1B', '\\', '\r', 0, 0);
  const __m256i table = _mm256_broadcastsi128_si256(row);
  const char* colon = nullptr;
  uint8_t flags = 0;
  for (const char* at = begin;; at += 64) {
    if (end - at < 64) {
      // The compiler leaves this out in front of that call; without it everything that runs later waits in each of its
      // own steps with such registers for what stands in their upper halves.
      _mm256_zeroupper();
      return scanRestBy16(at, end, {end, colon, flags});
    }
    const __m256i first = load(at);
    const __m256i second = load(at + 32);
    // The bits of the bytes before the line end, all of them when there is none.
    uint64_t before = ~uint64_t{0};
    uint64_t places = bits(_mm256_cmpeq_epi8(first, _mm256_shuffle_epi8(table, first)),
                           _mm256_cmpeq_epi8(second, _mm256_shuffle_epi8(table, second)));
    for (; places != 0; places &= places - 1) {
      const char byte = at[std::countr_zero(places)];
      if (byte == '\n' || byte == '\r') {
        before = (places & (0U - places)) - 1U;
        break;
      }
      flags |= flagOf(byte);
    }
    const uint64_t colons = bits(equal(first, ':'), equal(second, ':')) & before;
    if (colon == nullptr && colons != 0) colon = at + std::countr_zero(colons);
    if ((bits(first, second) & before) != 0) flags |= KRVCardScan::High;
    if (places != 0) return {at + std::countr_zero(places), colon, flags};
  }
}

constexpr std::array<KRVCardScanner, 3> kScanners = {scanBytes, scanBy16, scanBy64};

size_t countOfScanners() noexcept {
  return __builtin_cpu_supports("avx2") != 0 ? kScanners.size() : kScanners.size() - 1;
}

#else

constexpr std::array<KRVCardScanner, 1> kScanners = {scanBytes};

size_t countOfScanners() noexcept {
  return kScanners.size();
}

#endif

/// Stands in for the fastest scanner until the first line.
KRVCardScan scanFirst(const char* begin, const char* end) noexcept;

constinit std::atomic<KRVCardScanner> fastest{scanFirst};

KRVCardScan scanFirst(const char* begin, const char* end) noexcept {
  const KRVCardScanner found = krLineScanners().back();
  fastest.store(found, std::memory_order_relaxed);
  return found(begin, end);
}

}  // namespace

KRVCardScan krScanLine(const char* begin, const char* end) noexcept {
  return fastest.load(std::memory_order_relaxed)(begin, end);
}

std::span<const KRVCardScanner> krLineScanners() noexcept {
  return std::span(kScanners).first(countOfScanners());
}
