#include "contacts/vcard/KRVCardScan.h"

#include <bit>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

void scanByte(char byte, const char* at, KRVCardScan& scan) noexcept {
  if (byte == ':' && scan.colon == nullptr) scan.colon = at;
  if (static_cast<unsigned char>(byte) >= 0x80) scan.flags |= KRVCardScan::High;
  if (byte == '\\') scan.flags |= KRVCardScan::Backslash;
  if (byte == '\x1B') scan.flags |= KRVCardScan::Escape;
  if (byte == '"') scan.flags |= KRVCardScan::Quote;
}

#if defined(__SSE2__)

uint32_t equal(__m128i bytes, char byte) noexcept {
  return static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(byte))));
}

/// Scans sixteen bytes; whether the line ends among them.
bool scanBlock(const char* at, KRVCardScan& scan) noexcept {
  const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
  const uint32_t ends = equal(bytes, '\n') | equal(bytes, '\r');
  // The bits of the bytes before the line end.
  const uint32_t before = ends == 0 ? 0xFFFFU : (ends & (0U - ends)) - 1U;
  if (scan.colon == nullptr) {
    const uint32_t colons = equal(bytes, ':') & before;
    if (colons != 0) scan.colon = at + std::countr_zero(colons);
  }
  const auto high = static_cast<uint32_t>(_mm_movemask_epi8(bytes)) & before;
  const uint32_t special = (equal(bytes, '\\') | equal(bytes, '\x1B') | equal(bytes, '"')) & before;
  if (high != 0) scan.flags |= KRVCardScan::High;
  if (special != 0) {
    if ((equal(bytes, '\\') & before) != 0) scan.flags |= KRVCardScan::Backslash;
    if ((equal(bytes, '\x1B') & before) != 0) scan.flags |= KRVCardScan::Escape;
    if ((equal(bytes, '"') & before) != 0) scan.flags |= KRVCardScan::Quote;
  }
  if (ends == 0) return false;
  scan.end = at + std::countr_zero(ends);
  return true;
}

#endif

}  // namespace

KRVCardScan krScanLine(const char* begin, const char* end) noexcept {
  KRVCardScan scan{end, nullptr, 0};
  const char* at = begin;
#if defined(__SSE2__)
  for (; end - at >= 16; at += 16) {
    if (scanBlock(at, scan)) return scan;
  }
#endif
  for (; at != end; ++at) {
    if (*at == '\n' || *at == '\r') {
      scan.end = at;
      return scan;
    }
    scanByte(*at, at, scan);
  }
  return scan;
}
