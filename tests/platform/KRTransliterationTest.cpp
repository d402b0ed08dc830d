#include "platform/KRTransliteration.h"

#include <gtest/gtest.h>
#include <unicode/translit.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "platform/KRCaseFolding.h"

namespace {

/// ICU's own transliterator, slow and obvious.
class Judge {
 public:
  Judge() {
    UErrorCode status = U_ZERO_ERROR;
    UParseError place;
    transliterator_.reset(icu::Transliterator::createInstance("Han-Latin; NFD; [:Mn:] Remove; NFC; Any-Upper",
                                                              UTRANS_FORWARD, place, status));
  }
  bool isGood() const { return transliterator_ != nullptr; }
  std::string operator()(const icu::UnicodeString& text) const {
    icu::UnicodeString changed = text;
    transliterator_->transliterate(changed);
    std::string utf8;
    return changed.toUTF8String(utf8);
  }

 private:
  std::unique_ptr<icu::Transliterator> transliterator_;
};

const Judge& judge() {
  static const Judge only;
  return only;
}

std::string utf8Of(const icu::UnicodeString& text) {
  std::string utf8;
  return text.toUTF8String(utf8);
}

TEST(KRTransliteration, ReadsNames) {
  const struct {
    const char* name;
    const char* latin;
  } kRows[] = {
      {"王小明", "WANG XIAO MING"},
      {"Zoë Müller", "ZOE MULLER"},
      {"Straße", "STRASSE"},
      {"Lee王", "LEE WANG"},
      {"王Lee", "WANG LEE"},
      {"王3", "WANG3"},
      {"3王", "3WANG"},
      {"吕", "LU"},
      {"重庆", "CHONG QING"},
      {"重 庆", "CHONG QING"},
      {"重大", "ZHONG DA"},
      {"西藏文", "XI ZANG WEN"},
      {"（王）李", "（WANG） LI"},
      {"王(李)", "WANG (LI)"},
      {"㈱王", "(ZHU) WANG"},
      {"豈", "QI"},
      {"さん田", "さん TIAN"},
      {"ガ", "カ"},
      {"Łukasz Ćwik", "ŁUKASZ CWIK"},
      {"Иван Йод", "ИВАН ИОД"},
      {"", ""},
  };
  for (const auto& row : kRows) EXPECT_EQ(krMandarinLatinUpper(row.name).view(), row.latin) << row.name;
}

TEST(KRTransliteration, PlainTextIsSpacedByTheSameRules) {
  const struct {
    const char* name;
    const char* latin;
  } kRows[] = {{"Smith,John", "SMITH, JOHN"},
               {"J.R.R.", "J. R. R."},
               {"a(b)c", "A (B) C"},
               {"O'Brien-Lee", "O'BRIEN-LEE"},
               {"3.x", "3. X"},
               {"a.1", "A.1"},
               {"a  b", "A  B"},
               {"[x]{y}", "[X]{Y}"},
               {"z@y_w", "Z@Y_W"}};
  for (const auto& row : kRows) EXPECT_EQ(krMandarinLatinUpper(row.name).view(), row.latin) << row.name;
}

/// The sorting key of a text by what it is made of, one step after the other.
std::string plainKey(KRText text) {
  return std::string(krCaselessKey(krMandarinLatinUpper(text)).view());
}

std::string appendedKey(KRText text) {
  std::string key = "Kept)";
  EXPECT_TRUE(krAppendMandarinLatinKey(key, text));
  EXPECT_TRUE(key.starts_with("Kept)"));
  return key.substr(5);
}

TEST(KRTransliteration, AppendsTheSortingKeyOfPlainText) {
  std::mt19937 random(9);
  constexpr std::string_view kCharacters = "aZ ,.)](Bc'9-";
  for (int round = 0; round < 3000; ++round) {
    std::string text;
    // Long ones too, since the key is written in pieces.
    for (size_t i = random() % (round % 10 == 0 ? 900 : 12); i > 0; --i)
      text += kCharacters[random() % kCharacters.size()];
    const KRString kept{std::string_view(text)};
    EXPECT_EQ(appendedKey(kept), plainKey(kept)) << text;
  }
}

TEST(KRTransliteration, AppendsTheSortingKeyOfEveryCharacter) {
  for (UChar32 point = 1; point <= 0x33FFF; ++point) {
    if (U_IS_SURROGATE(point)) continue;
    const KRString text(utf8Of(icu::UnicodeString(point).append(u"王a")));
    ASSERT_EQ(appendedKey(text), plainKey(text)) << std::hex << point;
  }
}

TEST(KRTransliteration, AppendsTheSortingKeyOfMixedText) {
  std::mt19937 random(31);
  constexpr std::u32string_view kKinds = U"aZé王藏文重庆沈阳秘鲁3 .(ǅßİΣ\u0301\u0903Ой豈㈱さ김〇\U00020000";
  for (int round = 0; round < 20000; ++round) {
    icu::UnicodeString name;
    for (size_t length = random() % 8; length > 0; --length)
      name.append(static_cast<UChar32>(kKinds[random() % kKinds.size()]));
    const KRString text(utf8Of(name));
    ASSERT_EQ(appendedKey(text), plainKey(text)) << text.view();
  }
}

TEST(KRTransliteration, AppendsNoSortingKeyOfNothing) {
  std::string key = "Kept";
  EXPECT_FALSE(krAppendMandarinLatinKey(key, KRText()));
  EXPECT_EQ(key, "Kept");
}

TEST(KRTransliteration, NothingStaysNothing) {
  EXPECT_TRUE(krMandarinLatinUpper(KRText()).isNothing());
  EXPECT_FALSE(krMandarinLatinUpper("").isNothing());
}

TEST(KRTransliteration, AgreesWithIcuOnEveryHanCharacterAndItsNeighbourhood) {
  ASSERT_TRUE(judge().isGood());
  size_t han = 0;
  for (UChar32 point = 1; point <= 0x33FFF; ++point) {
    // Everything that may be Han, and a sample of the rest.
    const bool isNear = (point >= 0x2E80 && point < 0xA000) || (point >= 0xF900 && point < 0xFB00) || point >= 0x1F200;
    if (U_IS_SURROGATE(point) || (!isNear && point > 0x600 && point % 7 != 0)) continue;
    if (u_charType(point) == U_UNASSIGNED && point % 101 != 0) continue;
    const icu::UnicodeString text(point);
    const std::string expected = judge()(text);
    ASSERT_EQ(krMandarinLatinUpper(KRString(utf8Of(text))).view(), expected) << std::hex << point;
    han += expected.size() > 1 && expected[0] >= 'A' && expected[0] <= 'Z' && isNear ? 1 : 0;
  }
  EXPECT_GT(han, 44000U);
}

TEST(KRTransliteration, AgreesWithIcuOnEveryPairOfKindsOfCharacters) {
  std::u32string kinds =
      U"aZé王藏文重庆沈阳秘鲁3٣ ,.;:?!-'()[]{}«»“”‘’（）「」，．：？！｡、；。・〇々〆ーさガﾊﾞ김\u1100\u1161";
  kinds += U"\u0301\u0903\u20DDǅßıİﬁΣςΆаЙⅣ①㈱㋀㍻🈐⼀⺀豈\U0002F804\U00020000\U0001F600\t\n\u00A0\u3000\u302A";
  for (const char32_t first : kinds) {
    for (const char32_t second : kinds) {
      for (const char32_t third : {U'\0', U'王', U'b', U'\u0301'}) {
        icu::UnicodeString text(static_cast<UChar32>(first));
        text.append(static_cast<UChar32>(second));
        if (third != 0) text.append(static_cast<UChar32>(third));
        ASSERT_EQ(krMandarinLatinUpper(KRString(utf8Of(text))).view(), judge()(text)) << utf8Of(text);
      }
    }
  }
}

TEST(KRTransliteration, AgreesWithIcuOnRandomNames) {
  std::mt19937 random(20240607);
  const auto below = [&](size_t limit) { return random() % limit; };
  constexpr std::u32string_view kOthers = U"abcXYZéüñç  ,.;:()'’-0123ÅαΩжЯ";
  for (int round = 0; round < 3000; ++round) {
    icu::UnicodeString name;
    for (size_t length = 1 + below(12); length > 0; --length) {
      switch (below(6)) {
        case 0:
        case 1:
          name.append(static_cast<UChar32>(0x4E00 + below(0x5200)));
          break;
        case 2:
          name.append(static_cast<UChar32>(0x20000 + below(0x11300)));
          break;
        case 3: {
          const auto point = static_cast<UChar32>(1 + below(0x33FFF));
          name.append(U_IS_SURROGATE(point) ? UChar32{0x20} : point);
          break;
        }
        default:
          name.append(static_cast<UChar32>(kOthers[below(kOthers.size())]));
      }
    }
    ASSERT_EQ(krMandarinLatinUpper(KRString(utf8Of(name))).view(), judge()(name)) << utf8Of(name);
  }
}

}  // namespace
