// The Japanese converter through its exports, so that a test also proves the wiring.
#include "codec/japanese_converter.h"

#include <gtest/gtest.h>
#include <mailslice/exports.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>

#include "codec/shift_jis.h"
#include "support/test_support.h"

namespace mailslice::codec {
namespace {

using mailslice::testing::ScopedEnv;

const std::string kToKanji = "\x1B$B", kToAscii = "\x1B(B", kToKatakana = "\x1B(I";

// The source in a block of exactly its size, so that a read past its NUL shows in the
// sanitizer build.
std::unique_ptr<char[]> Exact(const std::string& text) {
  std::unique_ptr<char[]> copy(new char[text.size() + 1]);
  std::memcpy(copy.get(), text.c_str(), text.size() + 1);
  return copy;
}

std::string Euc2Sjs(std::string text) {
  EXPECT_EQ(euc2sjs(text.data()), 0);
  return text;
}

std::string Jis2Sjs(const std::string& jis) {
  std::string dest(jis.size() * 2 + 1, '\0');
  EXPECT_EQ(jis2sjs(dest.data(), Exact(jis).get()), dest.data());
  return dest.c_str();
}

std::string Sjis2Jis(const std::string& sjis) {
  std::string dest(sjis.size() * 4 + 8, '\0');
  SJIStoJIS(dest.data(), Exact(sjis).get());
  return dest.c_str();
}

// SJIStoJIS read literally, with its lead-byte test that scans from the start of the text for
// every position.
bool QuadraticLeadAt(const std::string& text, size_t i) {
  auto lead = [&](size_t k) { return IsShiftJisLead(static_cast<unsigned char>(text[k])); };
  if (i == 0) return lead(0);
  bool result = false;
  for (size_t k = 0; k <= i; ++k) result = lead(k) && ++k >= i;
  return result;
}

std::string ReferenceSjis2Jis(const std::string& text) {
  std::string out(text.size() * 4 + 8, '\0');
  size_t q = 0;
  int mode = 0;
  auto put = [&](int newMode, const std::string& shift, const std::string& bytes) {
    if (mode != newMode) out.replace(q, shift.size(), shift), q += shift.size(), mode = newMode;
    out.replace(q, bytes.size(), bytes), q += bytes.size();
  };
  for (size_t i = 0; i < text.size(); ++i) {
    auto byte = static_cast<unsigned char>(text[i]);
    if (QuadraticLeadAt(text, i)) {
      BytePair jis = ShiftJisPairToJis(byte, static_cast<unsigned char>(text.c_str()[++i]));
      put(1, kToKanji, {char(jis.first), char(jis.second)});
    } else if (byte < 0xA1 || byte > 0xDF) {
      put(0, kToAscii, std::string(1, char(byte)));
    } else {
      put(2, kToKatakana, "");
      out[q] = static_cast<char>(byte - 0x80);  // written, then overwritten by what follows
    }
  }
  put(0, kToAscii, "");
  return out.c_str();
}

TEST(JapaneseConverterTest, ConvertsThePairsOfMail) {
  EXPECT_EQ(Euc2Sjs("\xB0\xA1 mail\xA4\xA2"), "\x88\x9F mail\x82\xA0");
  EXPECT_EQ(Euc2Sjs("\x8E\xB1"), "\x77\xAF");  // single shift: plain pair arithmetic
  EXPECT_EQ(Euc2Sjs("a\xB0"), "a\xB0");        // a last high byte stays
  EXPECT_EQ(Jis2Sjs(kToKanji + "0!" + kToAscii + "A"), "\x88\x9F\x41");
  EXPECT_EQ(Jis2Sjs("\x1B$@0!\x1B(Jx"), "\x88\x9Fx");
  EXPECT_EQ(Jis2Sjs(kToKatakana + "1" + kToAscii + "\x1B"), "\xB1\x1B");
  EXPECT_EQ(Jis2Sjs(kToKanji + "0!\r\n"), "\x88\x9F\x77\x29");  // line breaks pair too
  EXPECT_EQ(Jis2Sjs(kToKanji + "0"), "\x88\x7E");  // a lone byte pairs with the NUL and ends
  EXPECT_EQ(Sjis2Jis("\xB1\xB2x"), kToKatakana + kToAscii + "x");  // katakana bytes overwritten
  EXPECT_EQ(Sjis2Jis("\x88"), kToKanji + "\x2F\xE1" + kToAscii);   // lone lead byte, NUL partner
}

TEST(JapaneseConverterTest, RoundTripsTheWholeJisX0208Range) {
  for (int row = 0x21; row <= 0x7E; ++row) {
    for (int cell = 0x21; cell <= 0x7E; ++cell) {
      std::string jis = kToKanji + char(row) + char(cell) + kToAscii;
      std::string sjis = Jis2Sjs(jis);
      ASSERT_EQ(sjis.size(), 2u);
      ASSERT_TRUE(IsShiftJisLead(static_cast<unsigned char>(sjis[0])));
      ASSERT_EQ(Sjis2Jis(sjis), jis) << row << " " << cell;
      ASSERT_EQ(Euc2Sjs({char(row | 0x80), char(cell | 0x80)}), sjis);
    }
  }
}

TEST(JapaneseConverterTest, LinearShiftJisToJisMatchesTheQuadraticRule) {
  const unsigned char bytes[] = {'a',  ' ',  '\n', 0x81, 0x88, 0x9F, 0xE0, 0xFC, 0xB1,
                                 0xDF, 0xA0, 0x80, 0xFD, 0x40, 0x7F, 0xA1, 0x9E};
  std::mt19937 random(5);
  for (int round = 0; round < 3000; ++round) {
    std::string text(random() % 40, ' ');
    for (char& byte : text) byte = static_cast<char>(bytes[random() % std::size(bytes)]);
    ASSERT_EQ(Sjis2Jis(text), ReferenceSjis2Jis(text)) << round;
    LeadByteScan scan(reinterpret_cast<const unsigned char*>(text.c_str()));
    for (size_t i = 0; i < text.size(); i += 1 + random() % 2) {
      ASSERT_EQ(scan.LeadAt(i), QuadraticLeadAt(text, i)) << round << " at " << i;
    }
  }
  // A megabyte of text made of a line that ends in ASCII: its conversion is that of the line,
  // repeated. The quadratic rule would take minutes.
  const std::string line = "Re: \x88\x9F\x82\xA0 \xB1\xB2 ok\r\n";
  std::string large, expected;
  for (std::string jisLine = ReferenceSjis2Jis(line); large.size() < (1u << 20);) {
    large += line;
    expected += jisLine;
  }
  EXPECT_EQ(Sjis2Jis(large), expected);
}

TEST(JapaneseConverterTest, Utf8ToTheDeviceCodePage) {
  auto convert = [](const char* language, const std::string& utf8) {
    ScopedEnv device("MAILSLICE_LANGUAGE", language);
    std::unique_ptr<char, decltype(&std::free)> text(utf82sjs(utf8.c_str()), &std::free);
    // Header decoding appends the same text to what it has gathered.
    std::string appended = "kept ";
    JapaneseConverter().AppendUtf8AsDevice(utf8, appended);
    EXPECT_EQ(appended, "kept " + std::string(text.get())) << language;
    return std::string(text.get());
  };
  EXPECT_EQ(convert("81", "\xE6\x97\xA5\xE6\x9C\xAC"), "\x93\xFA\x96\x7B");  // 日本 in CP932
  EXPECT_EQ(convert("81", "\xEF\xBB\xBF\xE6\x97\xA5\xE6\x9C\xAC"), "\x93\xFA\x96\x7B");
  EXPECT_EQ(convert("81", "\xEF\xBB\xBF"), "");
  // Korean devices narrow like wcstombs: the text ends at a character CP949 cannot hold.
  EXPECT_EQ(convert("82", "\xEA\xB0\x80\xF0\x9F\x98\x80\xEA\xB0\x80"), "\xB0\xA1");
  EXPECT_EQ(convert("1", "\xC3\xA9\xF0\x9F\x98\x80!"), "\xE9?!");
  EXPECT_EQ(utf82sjs(nullptr), nullptr);
  // UTF-7 text is taken and freed (the sanitizer build sees a leak or a double free).
  char* utf7 = static_cast<char*>(std::malloc(16));
  std::strcpy(utf7, "+ZeVnLIqe-");
  utf72sjs(utf7);
}

}  // namespace
}  // namespace mailslice::codec
