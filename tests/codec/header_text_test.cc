#include "codec/header_text.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/code_page.h"
#include "support/encoded_words.h"

namespace mailslice::codec {
namespace {

using namespace mailslice::testing;

// Realistic subjects and names in each charset the device reads, made by iconv and the
// library's encoder, decoded under a device language.
struct Realistic {
  const char* name;
  int language;
  std::string header;
  std::u16string expected;
};

class RealisticHeaderTest : public ::testing::TestWithParam<Realistic> {};

TEST_P(RealisticHeaderTest, DecodesToTheText) {
  ScopedLanguage device(GetParam().language);
  EXPECT_EQ(DecodeHeaderText(AsHeader(GetParam().header)).Str(), GetParam().expected);
}

const std::u16string kMeeting = u"会議のお知らせ";
const std::u16string kHello = u"안녕하세요 회의";
const std::u16string kRussian = u"Привет, мир";

std::string Jis(std::u16string_view text) { return InCodePage(kIso2022Jp, text); }

INSTANTIATE_TEST_SUITE_P(
    EachCharset, RealisticHeaderTest,
    ::testing::Values(
        Realistic{"Iso2022Jp", 81, "Re: " + Base64Word("ISO-2022-JP", Jis(kMeeting)),
                  u"Re: " + kMeeting},
        Realistic{"Iso2022JpWithLanguage", 81, Base64Word("iso-2022-jp*ja", Jis(kMeeting)),
                  kMeeting},
        Realistic{"Iso2022JpName", 81,
                  Base64Word("iso-2022-jp", Jis(u"山田太郎")) + " <taro@example.jp>",
                  u"山田太郎 <taro@example.jp>"},
        Realistic{"RawIso2022Jp", 81, "Re: " + Jis(kMeeting) + " (2)",
                  u"Re: " + kMeeting + u" (2)"},
        Realistic{"RawIso2022JpEndedByRoman", 81, Jis(u"会議") + "\x1B(J, next", u"会議, next"},
        Realistic{"ShiftJis", 81, Base64Word("Shift_JIS", InCodePage(kShiftJis, kMeeting)),
                  kMeeting},
        Realistic{"ShiftJisLowerCase", 81,
                  QuotedPrintableWord("shift_jis", InCodePage(kShiftJis, kMeeting)), kMeeting},
        Realistic{"EucJp", 81, Base64Word("EUC-JP", InCodePage(kEucJp, kMeeting)), kMeeting},
        Realistic{"EucKr", 82, Base64Word("euc-kr", InCodePage(kKorean, kHello)), kHello},
        Realistic{"KsC5601", 82, Base64Word("ks_c_5601-1987", InCodePage(kKorean, kHello)), kHello},
        // Quoted-printable words write spaces as underscores, which only language 33 turns
        // back into spaces.
        Realistic{"KsC5601Q", 82,
                  QuotedPrintableWord("KS_C_5601-1987", InCodePage(kKorean, kHello)),
                  u"안녕하세요_회의"},
        Realistic{"Koi8r", 7, Base64Word("koi8-r", InCodePage(kKoi8r, kRussian)), kRussian},
        Realistic{"Windows1251", 7,
                  QuotedPrintableWord("windows-1251", InCodePage(kWindows1251, kRussian)),
                  u"Привет,_мир"},
        Realistic{"Utf8English", 1, Base64Word("utf-8", InCodePage(kUtf8, u"Café Müller")),
                  u"Café Müller"},
        Realistic{"Utf8Japanese", 81, Base64Word("UTF-8", InCodePage(kUtf8, kMeeting), 'b'),
                  kMeeting},
        Realistic{"Utf8Korean", 82, QuotedPrintableWord("utf-8", InCodePage(kUtf8, kHello)),
                  u"안녕하세요_회의"},
        Realistic{"Utf8Russian", 7, Base64Word("utf-8", InCodePage(kUtf8, kRussian)), kRussian},
        // UTF-7 words keep their decoded bytes under every language.
        Realistic{"Utf7English", 1, Base64Word("utf-7", InCodePage(kUtf7, u"Café")), u"Caf+AOk-"},
        Realistic{"Utf7Japanese", 81, Base64Word("UTF-7", InCodePage(kUtf7, u"会議")),
                  u"+TxqLcA-"}),
    [](const auto& info) { return info.param.name; });

// Where the device language does not match the charset, the bytes are shown as they are in
// the device's code page (or not at all where the narrowing gives up).
TEST(HeaderTextTest, CharsetsOutsideTheDeviceLanguageAreNotConverted) {
  std::string shiftJis = InCodePage(kShiftJis, kMeeting);
  std::string korean = InCodePage(kKorean, kHello);
  {
    ScopedLanguage english(1);
    EXPECT_EQ(DecodeHeaderText(AsHeader(Base64Word("iso-2022-jp", Jis(kMeeting)))).Str(),
              platform::MultiByteToWide(kLatin1Windows, shiftJis));
    EXPECT_EQ(
        DecodeHeaderText(AsHeader(Base64Word("koi8-r", InCodePage(kKoi8r, u"OK " + kRussian)))),
        u"OK ");
    EXPECT_EQ(DecodeHeaderText(AsHeader(Base64Word("utf-8", InCodePage(kUtf8, kMeeting)))),
              u"???????");
  }
  {
    ScopedLanguage japanese(81);
    EXPECT_EQ(DecodeHeaderText(AsHeader(Base64Word("euc-kr", korean))).Str(),
              platform::MultiByteToWide(kShiftJis, korean));
  }
  {
    ScopedLanguage korean82(82);
    // There the UTF-8 converter narrows like wcstombs: it stops at what CP949 cannot hold.
    EXPECT_EQ(DecodeHeaderText(AsHeader(Base64Word("utf-8", InCodePage(kUtf8, u"한국 😀 끝")))),
              u"한국 ");
  }
  ScopedLanguage lowBytes(33);
  EXPECT_EQ(DecodeHeaderText(AsHeader(Base64Word("koi8-r", InCodePage(kKoi8r, u"Привет")))),
            u"\x1F@825B");
}

struct WalkCase {
  const char* name;
  std::string header;
  std::u16string expected;
};

class HeaderWalkTest : public ::testing::TestWithParam<WalkCase> {};

TEST_P(HeaderWalkTest, Decodes) {
  ScopedLanguage english(1);
  EXPECT_EQ(DecodeHeaderText(AsHeader(GetParam().header)).Str(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Walk, HeaderWalkTest,
    ::testing::Values(
        WalkCase{"PlainText", "Meeting at 10", u"Meeting at 10"},
        WalkCase{"MarkerCases", "=?utf-8?B?w6k=?= =?UTF-8?b?w6k=?= =?utf-8?q?=C3=A9?=", u"é é é"},
        WalkCase{"UnlistedSpellingKeepsBytes", "=?Utf-8?B?w6k=?=", u"Ã©"},
        WalkCase{"NoMarkerKeepsText", "=?utf-8?X?abc?=", u"?X?abc"},
        WalkCase{"LineBreaksBetweenWordsVanish", "=?utf-8?Q?a?=\r\n =?utf-8?Q?b?=\r\n", u"a b"},
        WalkCase{"OtherTextBetweenWordsStays", "=?utf-8?Q?a?= and =?utf-8?Q?b?=!", u"a and b!"},
        WalkCase{"UnderscoreStaysOutsideLanguage33",
                 "=?iso-8859-1?Q?caf=E9_au_lait?=", u"café_au_lait"},
        WalkCase{"UnterminatedWordEndsTheText", "Hello =?utf-8?B?QUJD and more", u"Hello "},
        WalkCase{"StartAtTheVeryEnd", "abc =?", u"abc "},
        WalkCase{"LoneEqualsAndQuestionMarks", "a = b? c=", u"a = b? c="},
        WalkCase{"WordWithoutCharset", "=??B?QUJD?=", u"ABC"},
        WalkCase{"EmptyWord",
                 "x=?"
                 "?=y",
                 u"xy"},
        WalkCase{"Base64Garbage", "=?utf-8?B?!!!QU*JD?=", u"ABC"},
        WalkCase{"LowerCaseHexIsNotAnEscape", "=?utf-8?Q?a=3db?=", u"a3db"},
        // Russian mail shows its first Cyrillic word alone.
        WalkCase{"CyrillicWordAlone",
                 "Re: " + Base64Word("koi8-r", InCodePage(kKoi8r, u"Hello")) + " tail " +
                     Base64Word("utf-8", "more"),
                 u"Hello"},
        WalkCase{"UndefinedWindows1251ByteShowsAsQuestionMark",
                 "=?windows-1251?Q?a=98b?=", u"a?b"}),
    [](const auto& info) { return info.param.name; });

TEST(HeaderTextTest, UnderscoresBecomeSpacesUnderLanguage33) {
  ScopedLanguage lowBytes(33);
  EXPECT_EQ(DecodeHeaderText(AsHeader("=?iso-8859-1?Q?caf=E9_au_lait?=")), u"café au lait");
}

// ks_c_5601-1987 words share the JIS converter: an escape in one switches it to two-byte
// mode, and a last lone byte pairs with the end of the text.
TEST(HeaderTextTest, KoreanWordsTakeTheJapaneseRoute) {
  ScopedLanguage japanese(81);
  EXPECT_EQ(DecodeHeaderText(AsHeader(Base64Word("ks_c_5601-1987", "\x1B$B0!0"))).Str(),
            platform::MultiByteToWide(kShiftJis, "\x88\x9F\x88\x7E"));
  // A Base64 tail group leaves bytes past the counted ones; they are read as text too.
  EXPECT_NO_THROW(DecodeHeaderText(AsHeader("=?ks_c_5601-1987?B?GyRCMCEwQQ?=")));
}

TEST(HeaderTextTest, HostileValuesReturn) {
  ScopedLanguage english(1);
  const size_t kMegabyte = 1 << 20;
  EXPECT_EQ(DecodeHeaderText(AsHeader("=?")), u"");
  EXPECT_EQ(DecodeHeaderText(AsHeader(std::string(kMegabyte, 'a'))).GetLength(), int(kMegabyte));
  EXPECT_EQ(DecodeHeaderText(AsHeader(std::string(kMegabyte, '\n'))), u"");
  EXPECT_EQ(DecodeHeaderText(AsHeader(std::string(kMegabyte, '?') + "=")).GetLength(),
            int(kMegabyte) + 1);
  EXPECT_EQ(DecodeHeaderText(AsHeader(std::string("x") + std::string(kMegabyte, '\x1B'))),
            CString(u"x") + CString(u'\x1B', int(kMegabyte)));
  std::string starts;
  for (size_t i = 0; i < kMegabyte / 2; ++i) starts += "=?";
  EXPECT_LE(DecodeHeaderText(AsHeader(starts)).GetLength(), int(kMegabyte));
  std::string raw;
  for (size_t i = 0; i < kMegabyte / 4; ++i) raw += "\x1B$B?=";
  EXPECT_NO_THROW(DecodeHeaderText(AsHeader(raw)));
  std::string words;
  for (int i = 0; i < 20000; ++i) words += "=?utf-8?B?QUJD?= ";
  EXPECT_EQ(DecodeHeaderText(AsHeader(words)).GetLength(), 20000 * 4);
  std::string huge = Base64Word("utf-8", std::string(kMegabyte, 'z'));
  EXPECT_EQ(DecodeHeaderText(AsHeader(huge)).GetLength(), int(kMegabyte));
}

}  // namespace
}  // namespace mailslice::codec
