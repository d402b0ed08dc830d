#include "platform/KRTextDecoding.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "platform/KRString.h"

namespace {

using Encoding = KRTextEncoding;

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

std::string encoded(std::string_view text, const char* charset) {
  const auto bytes = krEncodeWith(KRText(text), charset);
  EXPECT_TRUE(bytes.has_value()) << charset;
  return bytes.value_or("");
}

/// Cards in several scripts, as long as cards are.
const std::vector<std::string>& cards() {
  static const auto* const only = new std::vector<std::string>{
      "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Ann Smith\r\nEND:VCARD\r\n",
      "BEGIN:VCARD\nFN:Zoë Müller-Łukasz\nNOTE:naïve, café\nEND:VCARD\n",
      "Имя,Фамилия\nИван,Иванов\nМария,Петрова\n",
      "姓名,电话\n王小明,12345\n李一,23456\n上海一一,345\n",
      "名前,電話\r\n田中さくら,03\r\n佐藤ガンダム,04\r\n",
      "이름,전화\n김철수,02\n",
      "שם,טלפון\nדוד,05\n",
      "ชื่อ,โทร\nสมชาย,02\n",
      "emoji,😀\n𠂇,𐐀\n",
      "a,b\n",
  };
  return *only;
}

TEST(KRTextDecoding, WideTextIsRecognisedWithAndWithoutMark) {
  const struct {
    const char* charset;
    Encoding encoding;
    std::string_view mark;
  } kRows[] = {
      {"UTF-8", Encoding::Utf8, kUtf8Mark},
      {"UTF-16LE", Encoding::Utf16LittleEndian, "\xFF\xFE"},
      {"UTF-16BE", Encoding::Utf16BigEndian, "\xFE\xFF"},
      {"UTF-32LE", Encoding::Utf32LittleEndian, std::string_view("\xFF\xFE\0\0", 4)},
      {"UTF-32BE", Encoding::Utf32BigEndian, std::string_view("\0\0\xFE\xFF", 4)},
  };
  for (const auto& row : kRows) {
    for (const std::string& card : cards()) {
      const std::string plain = encoded(card, row.charset);
      const std::string marked = std::string(row.mark) + plain;
      EXPECT_EQ(krGuessEncoding(marked), row.encoding) << row.charset << card;
      EXPECT_EQ(krMarkSize(marked, row.encoding), row.mark.size());
      const auto decoded = krDecodeText(marked, KRDecodeOptions::westernFallback());
      ASSERT_TRUE(decoded);
      EXPECT_EQ(decoded->utf8, card) << row.charset;
      EXPECT_TRUE(decoded->hadMark);
      EXPECT_EQ(decoded->charset, row.charset);
      if (row.mark.size() == 4) continue;  // Nobody writes UTF-32 without a mark.
      EXPECT_EQ(krGuessEncoding(plain), row.encoding) << row.charset << card;
      const auto guessed = krDecodeText(plain, KRDecodeOptions::westernFallback());
      ASSERT_TRUE(guessed);
      EXPECT_EQ(guessed->utf8, card) << row.charset;
      EXPECT_FALSE(guessed->hadMark);
    }
  }
}

TEST(KRTextDecoding, LongWideTextIsRecognisedWhereverItsSampleIsCut) {
  for (size_t shift = 0; shift < 4; ++shift) {
    std::string text(shift, 'x');
    while (text.size() < 60000) text += "王小明😀,1\n";
    for (const char* charset : {"UTF-16LE", "UTF-16BE"}) {
      const auto decoded = krDecodeText(encoded(text, charset), KRDecodeOptions::westernFallback());
      ASSERT_TRUE(decoded);
      EXPECT_EQ(decoded->charset, charset);
      EXPECT_TRUE(decoded->utf8 == text);
    }
    EXPECT_EQ(krGuessEncoding(text), Encoding::Utf8);
  }
}

TEST(KRTextDecoding, StrayZeroBytesDoNotMakeTextWide) {
  const std::string zero(1, '\0');
  for (const std::string& card : cards()) {
    for (const size_t place : {size_t{0}, card.size() / 2, card.size()}) {
      std::string text = card;
      // Not into a character.
      size_t at = place;
      while (at < text.size() && (text[at] & 0xC0) == 0x80) ++at;
      text.insert(at, zero);
      EXPECT_EQ(krGuessEncoding(text), Encoding::Utf8) << card;
      EXPECT_EQ(krDecodeText(text, KRDecodeOptions::westernFallback())->utf8, text);
    }
  }
  EXPECT_EQ(krGuessEncoding(std::string(5000, '\0')), Encoding::Utf8);
  EXPECT_EQ(krGuessEncoding("Ann" + std::string(5000, '\0')), Encoding::Utf8);
  EXPECT_EQ(krGuessEncoding("caf\xE9 and na\xEFve text\nwith lines\n" + zero + "x\n"), Encoding::Other);
}

TEST(KRTextDecoding, EmptyTextIsUtf8) {
  EXPECT_EQ(krGuessEncoding(""), Encoding::Utf8);
  EXPECT_EQ(krGuessEncoding(std::string_view()), Encoding::Utf8);
  for (const std::string_view bytes :
       {std::string_view(), kUtf8Mark, std::string_view("\xFF\xFE"), std::string_view("\xFE\xFF")}) {
    const auto decoded = krDecodeText(bytes, KRDecodeOptions::plainFallbacks());
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->utf8, "");
    EXPECT_EQ(decoded->hadMark, !bytes.empty());
  }
}

TEST(KRTextDecoding, WhatCannotBeReadBecomesTheReplacementCharacter) {
  const struct {
    std::string_view bytes;
    std::string_view text;
  } kRows[] = {
      {"\xEF\xBB\xBF"
       "a\xFFz",
       "a\uFFFDz"},
      {std::string_view("\xFF\xFE"
                        "a\0b",
                        5),
       "a\uFFFD"},
      {std::string_view("\xFF\xFE\x00\xD8"
                        "a\0",
                        6),
       "\uFFFDa"},
      {std::string_view("\xFE\xFF\xDC\x00\xD8\x00\xD8\x00\xDC\x00\xD8\x00", 12), "\uFFFD\uFFFD\U00010000\uFFFD"},
      {std::string_view("\0\0\xFE\xFF\0\x11\0\0\0\0\xD8\0\0\0\0a\0", 17), "\uFFFD\uFFFDa\uFFFD"},
  };
  for (const auto& row : kRows) {
    const auto decoded = krDecodeText(row.bytes, KRDecodeOptions::westernFallback());
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->utf8, row.text);
  }
}

TEST(KRTextDecoding, DamagedUtf8IsReadAsUtf8) {
  std::string text = "Zoë, Müller, Ångström, naïve, café, Łódź\n";
  text[text.find("Å") + 1] = '!';
  const auto decoded = krDecodeText(text, KRDecodeOptions::westernFallback());
  ASSERT_TRUE(decoded);
  EXPECT_EQ(decoded->charset, "UTF-8");
  EXPECT_EQ(decoded->utf8, "Zoë, Müller, \uFFFD!ngström, naïve, café, Łódź\n");
}

TEST(KRTextDecoding, LongTextOfACharsetIsDetected) {
  const struct {
    const char* charset;
    const char* text;
  } kRows[] = {
      {"Shift_JIS",
       "名前:田中さくら\n住所:東京都千代田区丸の内一丁目\n備考:電話は午後にお願いします。よろしくお願いいたします。\n"},
      {"EUC-JP",
       "名前:田中さくら\n住所:東京都千代田区丸の内一丁目\n備考:電話は午後にお願いします。よろしくお願いいたします。\n"},
      {"GB18030", "姓名：王小明\n地址：北京市朝阳区建国路\n备注：请在下午打电话给我，谢谢您的合作。我们明天见面。\n"},
      {"Big5",
       "姓名：王小明\n地址：臺北市中正區重慶南路一段\n備註：請在下午打電話給我，謝謝您的合作。我們明天見面。\n"},
      {"KOI8-R",
       "Имя: Иван Иванов\nАдрес: Москва, улица Ленина\nЗаметка: пожалуйста, звоните только после обеда, спасибо\n"},
      {"windows-1251",
       "Имя: Иван Иванов\nАдрес: Москва, улица Ленина\nЗаметка: пожалуйста, звоните только после обеда, спасибо\n"},
      {"windows-1252",
       "Prénom: Hélène\nNote: merci de me rappeler après le déjeuner, je suis à l'hôtel à côté de la gare. "
       "Il a été très gentil avec nous, et les élèves ont préféré la leçon de français à celle d'été.\n"},
  };
  for (const auto& row : kRows) {
    const std::string bytes = encoded(row.text, row.charset);
    EXPECT_EQ(krGuessEncoding(bytes), Encoding::Other) << row.charset;
    // Far down in a file of plain text, too.
    for (const size_t lines : {size_t{0}, size_t{5000}}) {
      std::string before;
      for (size_t line = 0; line < lines; ++line) before += "plain text and more\n";
      const auto decoded = krDecodeText(before + bytes, KRDecodeOptions::plainFallbacks());
      ASSERT_TRUE(decoded) << row.charset;
      EXPECT_EQ(decoded->charset, row.charset);
      EXPECT_TRUE(decoded->utf8 == before + row.text) << row.charset;
    }
  }
}

TEST(KRTextDecoding, FallbacksAreTriedInOrder) {
  const std::string_view bytes = "Ren\x8E";
  const auto western = krDecodeText(bytes, KRDecodeOptions::westernFallback());
  ASSERT_TRUE(western);
  EXPECT_EQ(western->charset, "windows-1252");
  EXPECT_EQ(western->utf8, "RenŽ");
  const auto plain = krDecodeText(bytes, KRDecodeOptions::plainFallbacks());
  ASSERT_TRUE(plain);
  EXPECT_EQ(plain->charset, "macintosh");
  EXPECT_EQ(plain->utf8, "René");
  EXPECT_EQ(plain->encoding, Encoding::Other);
  KRDecodeOptions none;
  none.detectsCharset = false;
  EXPECT_FALSE(krDecodeText(bytes, none));
  constexpr std::string_view kStrict[] = {"US-ASCII", "no-such-charset"};
  none.fallbacks = kStrict;
  EXPECT_FALSE(krDecodeText(bytes, none));
}

TEST(KRTextDecoding, MacintoshAndWindowsAreToldApartByWhatWouldBeMisplaced) {
  const struct {
    const char* text;
    std::vector<const char*> charsets;
  } kRows[] = {
      {"Name\nRené Müller\n", {"macintosh", "windows-1252"}},
      {"Vorname;Straße\nJörg;Große Allee\nGünther;Schöne Aussicht\n", {"macintosh", "windows-1252"}},
      // Here the guess is not sure, and the fixed fallback stays.
      {"Nombre\nIñigo Muñoz\nMUÑOZ\n", {"macintosh"}},
      {"Prénom,Ville\nHélène,Orléans\nFrançois,Besançon\n", {"macintosh"}},
  };
  for (const auto& row : kRows) {
    for (const char* charset : row.charsets) {
      const auto decoded = krDecodeText(encoded(row.text, charset), KRDecodeOptions::plainFallbacks());
      ASSERT_TRUE(decoded);
      EXPECT_EQ(decoded->utf8, row.text) << charset;
    }
  }
}

TEST(KRTextDecoding, AFewAccentsAreReadAsTheCommonestWesternCharset) {
  for (const std::string_view bytes : {"FN:Ren\xE9\n", "FN:Mu\xF1oz\n", "FN:M\xFCller\nFN:J\xF6rg\n"}) {
    const auto decoded = krDecodeText(bytes, KRDecodeOptions::westernFallback());
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->charset, "windows-1252") << decoded->utf8;
  }
}

TEST(KRTextDecoding, TheFallbacksGiveEveryByteAMeaning) {
  std::string every;
  for (int byte = 1; byte < 256; ++byte) every += static_cast<char>(byte);
  for (KRDecodeOptions options : {KRDecodeOptions::westernFallback(), KRDecodeOptions::plainFallbacks()}) {
    options.detectsCharset = false;
    const auto decoded = krDecodeText(every, options);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->utf8.find("\uFFFD"), std::string::npos);
    EXPECT_EQ(krEncodeWith(KRText(std::string_view(decoded->utf8)), KRText(std::string_view(decoded->charset))), every);
  }
}

TEST(KRTextDecoding, CharsetsAreKnownByManyNames) {
  const struct {
    const char* charset;
    std::string_view bytes;
    std::string_view text;
  } kRows[] = {
      {"UTF-8", "caf\xC3\xA9", "café"},
      {"utf8", "\xEF\xBB\xBFx\xFF", "x\uFFFD"},
      {"MACINTOSH", "caf\x8E", "café"},
      {"Shift_JIS", "\x93\x63\x92\x86", "田中"},
      {"SHIFT-JIS", "\xB6\xDE", "ｶﾞ"},
      {"ISO-8859-1", "\x80 caf\xE9", "€ café"},
      {"latin1", "\x80", "€"},
      {"us-ascii", "caf\xE9", "café"},
      {"windows-1250", "\xA3\xF3\x64\x9F", "Łódź"},
      {"cp1251", "\xC8\xE2\xE0\xED", "Иван"},
      {"GB2312", "\xCD\xF5\xE9\x46", "王镕"},
      {"gbk", "\x81\x40", "丂"},
      {"EUC-KR", "\xB1\xE8\x81\x41", "김갂"},
      {"ISO-8859-15", "\xA4", "€"},
      {"ISO-2022-JP", "\x1B$BEDCf\x1B(B", "田中"},
      {"UTF-16LE",
       std::string_view("\xFF\xFE"
                        "a\0",
                        4),
       "a"},
      {"UTF-7", "caf+AOk-", "café"},
  };
  for (const auto& row : kRows) {
    const auto decoded = krDecodeWith(row.bytes, row.charset);
    ASSERT_TRUE(decoded) << row.charset;
    EXPECT_EQ(*decoded, row.text) << row.charset;
  }
}

TEST(KRTextDecoding, UnknownNamesAreNothing) {
  for (const KRText name : {KRText(), KRText(""), KRText("no-such-charset"), KRText("ibm-1047,swaplfnl"), KRText("a/b"),
                            KRText("\0x", 2), KRText("Shift_JIS "), KRText("日本")}) {
    EXPECT_FALSE(krDecodeWith("x", name)) << name.view();
    EXPECT_FALSE(krEncodeWith("x", name)) << name.view();
  }
  EXPECT_FALSE(krDecodeWith("x", KRText(std::string_view(std::string(1000, 'a')))));
}

TEST(KRTextDecoding, EncodingNeverLosesACharacter) {
  EXPECT_EQ(krEncodeWith("café", "ISO-8859-1"), "caf\xE9");
  EXPECT_EQ(krEncodeWith("", "macintosh"), "");
  EXPECT_FALSE(krEncodeWith("王", "ISO-8859-1"));
  EXPECT_FALSE(krEncodeWith("€", "ISO-8859-1"));
  EXPECT_FALSE(krEncodeWith("é", "US-ASCII"));
  // Usually invisible, yet there.
  EXPECT_FALSE(krEncodeWith("a\u200Db", "windows-1251"));
  EXPECT_FALSE(krEncodeWith("a\u00ADb", "US-ASCII"));
  // Not even by one that looks alike.
  EXPECT_FALSE(krEncodeWith("Ａ", "windows-1252"));
  EXPECT_FALSE(krEncodeWith(KRText(), "UTF-8"));
}

TEST(KRTextDecoding, WhatIsEncodedIsDecodedBack) {
  std::mt19937 random(11);
  const char* kCharsets[] = {"UTF-8",        "UTF-16LE",    "UTF-16BE",  "UTF-32LE",   "GB18030",
                             "windows-1252", "windows-874", "macintosh", "ISO-8859-7", "Shift_JIS"};
  size_t held = 0;
  for (int round = 0; round < 4000; ++round) {
    std::u16string units;
    constexpr char32_t kLimits[] = {0x80, 0x100, 0x3000, 0xD800, 0x10FFFF};
    const char32_t limit = kLimits[random() % std::size(kLimits)];
    std::string text;
    for (size_t length = random() % 9; length > 0; --length) {
      char32_t point = 1 + static_cast<char32_t>(random() % limit);
      if ((point >= 0xD800 && point < 0xE000) || point == 0xFEFF) point = 'x';
      if (point < 0x80) {
        text += static_cast<char>(point);
      } else if (point < 0x800) {
        text += static_cast<char>(0xC0 | (point >> 6U));
        text += static_cast<char>(0x80 | (point & 0x3F));
      } else if (point < 0x10000) {
        text += static_cast<char>(0xE0 | (point >> 12U));
        text += static_cast<char>(0x80 | ((point >> 6U) & 0x3F));
        text += static_cast<char>(0x80 | (point & 0x3F));
      } else {
        text += static_cast<char>(0xF0 | (point >> 18U));
        text += static_cast<char>(0x80 | ((point >> 12U) & 0x3F));
        text += static_cast<char>(0x80 | ((point >> 6U) & 0x3F));
        text += static_cast<char>(0x80 | (point & 0x3F));
      }
    }
    ASSERT_TRUE(krIsWellFormed(text));
    const char* charset = kCharsets[random() % std::size(kCharsets)];
    const auto bytes = krEncodeWith(KRText(std::string_view(text)), charset);
    if (!bytes) continue;
    ++held;
    ASSERT_EQ(krDecodeWith(*bytes, charset), text) << charset;
  }
  EXPECT_GT(held, 1500U);
}

}  // namespace
