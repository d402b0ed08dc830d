#include "contacts/model/KRCardUnfolding.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstdint>
#include <cstring>

#include "platform/KRBytes.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace {

/// Puts the end behind the text from `to` to `end`, which may end in line feeds.
size_t finished(char* to, char* end) noexcept {
  while (end != to && end[-1] == '\n') --end;
  std::memset(end, 0, sizeof(uint64_t));
  return static_cast<size_t>(end - to);
}

/// Copies all before the next line end and leaves `at` there, or at the end. May write zeros or more of the text behind
/// what it copies, within the room.
void copyLine(const char*& at, const char* end, char*& to) noexcept {
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

/// Line after line, by whole words.
size_t unfoldByWords(std::string_view card, char* to) noexcept {
  char* out = to;
  const char* at = card.data();
  const char* const end = at + card.size();
  while (at != end) {
    copyLine(at, end, out);
    while (at != end && *at == '\r') ++at;
    if (at != end && *at == '\n') ++at;
    if (at != end && (*at == ' ' || *at == '\t')) {
      ++at;
    } else if (out != to && out[-1] != '\n') {
      *out++ = '\n';
    }
  }
  return finished(to, out);
}

#if defined(__x86_64__)

/// All bytes of a block but those that go, whatever its lines are like: without a branch that depends on the text.
/// Empty lines, and carriage returns without a line feed, are left to the other way.
[[gnu::target("avx512bw,avx512vbmi2,popcnt")]] size_t unfoldBy64(std::string_view card, char* to) noexcept {
  constexpr size_t kBlock = 64;
  const auto isOneOf = [](char c, char one, char other) { return c == one || c == other; };
  if (card.empty() || isOneOf(card.front(), '\n', '\r')) return unfoldByWords(card, to);
  const char* at = card.data();
  char* out = to;
  // Whether the block before ended in one of them.
  uint64_t afterFeed = 0;
  uint64_t afterReturn = 0;
  uint64_t strange = 0;
  for (size_t left = card.size(); left != 0;) {
    const size_t count = std::min(left, kBlock);
    left -= count;
    const uint64_t inText = ~uint64_t{0} >> (kBlock - count);
    const __m512i bytes = _mm512_maskz_loadu_epi8(inText, at);
    const uint64_t feeds = _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8('\n'));
    const uint64_t returns = _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8('\r'));
    const uint64_t blanks =
        _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8(' ')) | _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8('\t'));
    const uint64_t isBlankNext = left != 0 && isOneOf(at[kBlock], ' ', '\t') ? uint64_t{1} << 63U : 0;
    const uint64_t behindFeeds = feeds << 1U | afterFeed;
    const uint64_t behindReturns = returns << 1U | afterReturn;
    strange |= (behindFeeds & (feeds | returns)) | (behindReturns & ~feeds & inText);
    const uint64_t folds = (feeds & (blanks >> 1U | isBlankNext)) | (behindFeeds & blanks);
    const uint64_t kept = inText & ~(returns | folds);
    _mm512_storeu_si512(out, _mm512_maskz_compress_epi8(kept, bytes));
    out += _mm_popcnt_u64(kept);
    at += count;
    afterFeed = feeds >> 63U;
    afterReturn = returns >> 63U;
  }
  _mm256_zeroupper();
  return strange == 0 ? finished(to, out) : unfoldByWords(card, to);
}

constexpr std::array<KRCardUnfolder, 2> kUnfolders = {unfoldByWords, unfoldBy64};

size_t countOfUnfolders() noexcept {
  const bool hasAll = __builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("avx512vbmi2") != 0 &&
                      __builtin_cpu_supports("popcnt") != 0;
  return hasAll ? kUnfolders.size() : kUnfolders.size() - 1;
}

#else

constexpr std::array<KRCardUnfolder, 1> kUnfolders = {unfoldByWords};

size_t countOfUnfolders() noexcept {
  return kUnfolders.size();
}

#endif

/// Stands in for the fastest way until the first card.
size_t unfoldFirst(std::string_view card, char* to) noexcept;

constinit std::atomic<KRCardUnfolder> fastest{unfoldFirst};

size_t unfoldFirst(std::string_view card, char* to) noexcept {
  const KRCardUnfolder found = krCardUnfolders().back();
  fastest.store(found, std::memory_order_relaxed);
  return found(card, to);
}

}  // namespace

size_t krUnfoldCard(std::string_view card, char* to) noexcept {
  return fastest.load(std::memory_order_relaxed)(card, to);
}

std::span<const KRCardUnfolder> krCardUnfolders() noexcept {
  return std::span(kUnfolders).first(countOfUnfolders());
}
