#include "platform/KRHanReading.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "platform/KRHanSyllables.h"
#include "platform/KRText.h"

namespace {

/// Where characters with readings lie; everything else has none.
struct Range {
  char32_t first;
  char32_t last;
};
constexpr std::array<Range, 2> kRanges = {{{0x2E80, 0x9FFF}, {0x20000, 0x323AF}}};

/// The number of a syllable plus one for each place of each range; 0 for none.
class Index {
 public:
  Index() {
    for (size_t i = 0; i < kRanges.size(); ++i) places_[i].resize(kRanges[i].last - kRanges[i].first + 1);
    const std::span<const KRHanSyllable> syllables = krHanSyllables();
    for (size_t number = 0; number < syllables.size(); ++number) {
      const std::string_view characters = syllables[number].characters;
      for (size_t position = 0; position < characters.size();) {
        uint16_t* place = find(krNextCodePoint(characters, position));
        if (place != nullptr) *place = static_cast<uint16_t>(number + 1);
      }
    }
  }

  uint16_t* find(char32_t character) noexcept {
    for (size_t i = 0; i < kRanges.size(); ++i) {
      if (character >= kRanges[i].first && character <= kRanges[i].last)
        return &places_[i][character - kRanges[i].first];
    }
    return nullptr;
  }

 private:
  std::array<std::vector<uint16_t>, kRanges.size()> places_;
};

}  // namespace

std::string_view krHanReading(char32_t character) noexcept {
  if (character < kRanges[0].first) return {};
  static auto* const index = new Index;
  const uint16_t* place = index->find(character);
  return place == nullptr || *place == 0 ? std::string_view() : krHanSyllables()[*place - 1U].syllable;
}
