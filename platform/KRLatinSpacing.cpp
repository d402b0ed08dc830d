#include "platform/KRLatinSpacing.h"

#include <cstdint>

#include "platform/KRICU.h"

KRLatinTraits krLatinTraitsOf(char32_t character) noexcept {
  if (character < 0x80) return kKRLatinAsciiTraits[character];
  const auto point = static_cast<UChar32>(character);
  const uint32_t category = U_GET_GC_MASK(point);
  const bool isIdeograph = u_hasBinaryProperty(point, UCHAR_IDEOGRAPHIC) != 0;
  constexpr std::u32string_view kEnds = U"！，．：？｡、；";
  return {.isLetter = (category & U_GC_L_MASK) != 0,
          .isMark = (category & U_GC_M_MASK) != 0,
          .setsOffLetter = isIdeograph || (category & (U_GC_PE_MASK | U_GC_PF_MASK)) != 0 ||
                           kEnds.find(character) != std::u32string_view::npos,
          .isSetOff = isIdeograph || (category & (U_GC_PS_MASK | U_GC_PI_MASK)) != 0};
}
