#include "codec/header_text.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/code_page.h"
#include "support/encoded_words.h"

namespace mailslice::codec {
namespace {

using namespace mailslice::testing;

const std::u16string kMeeting = u"会議のお知らせ";
const std::u16string kHello = u"안녕하세요 회의";
const std::u16string kRussian = u"Привет, мир";

std::string Jis(std::u16string_view text) { return InCodePage(kIso2022Jp, text); }

std::u16string Decoded(int language, const std::string& header) {
  ScopedLanguage device(language);
  return DecodeHeaderText(AsHeader(header)).Str();
}

// Subjects and names as mail programs write them in each charset, under the device language
// whose code page holds them. Quoted-printable words write spaces as underscores, which only
// language 33 turns back into spaces; UTF-7 words keep their decoded bytes.
TEST(HeaderTextTest, RealisticTextInEachCharset) {
  std::string sjis = InCodePage(kShiftJis, kMeeting);
  std::string korean = InCodePage(kKorean, kHello);
  EXPECT_EQ(Decoded(81, "Re: " + Base64Word("ISO-2022-JP", Jis(kMeeting))), u"Re: " + kMeeting);
  EXPECT_EQ(Decoded(81, Base64Word("iso-2022-jp*ja", Jis(u"山田")) + " <y@example.jp>"),
            u"山田 <y@example.jp>");
  EXPECT_EQ(Decoded(81, "Re: " + Jis(kMeeting) + " (2)"), u"Re: " + kMeeting + u" (2)");
  EXPECT_EQ(Decoded(81, Jis(u"会議") + "\x1B(J, next"), u"会議, next");
  EXPECT_EQ(Decoded(81, Base64Word("Shift_JIS", sjis)), kMeeting);
  EXPECT_EQ(Decoded(81, QuotedPrintableWord("shift_jis", sjis)), kMeeting);
  EXPECT_EQ(Decoded(81, Base64Word("EUC-JP", InCodePage(kEucJp, kMeeting))), kMeeting);
  EXPECT_EQ(Decoded(82, Base64Word("euc-kr", korean)), kHello);
  EXPECT_EQ(Decoded(82, Base64Word("ks_c_5601-1987", korean)), kHello);
  EXPECT_EQ(Decoded(82, QuotedPrintableWord("KS_C_5601-1987", korean)), u"안녕하세요_회의");
  EXPECT_EQ(Decoded(7, Base64Word("koi8-r", InCodePage(kKoi8r, kRussian))), kRussian);
  EXPECT_EQ(Decoded(7, QuotedPrintableWord("windows-1251", InCodePage(kWindows1251, kRussian))),
            u"Привет,_мир");
  EXPECT_EQ(Decoded(1, Base64Word("utf-8", InCodePage(kUtf8, u"Café Müller"))), u"Café Müller");
  EXPECT_EQ(Decoded(81, Base64Word("UTF-8", InCodePage(kUtf8, kMeeting), 'b')), kMeeting);
  EXPECT_EQ(Decoded(82, Base64Word("utf-8", InCodePage(kUtf8, kHello))), kHello);
  EXPECT_EQ(Decoded(7, Base64Word("utf-8", InCodePage(kUtf8, kRussian))), kRussian);
  EXPECT_EQ(Decoded(1, Base64Word("utf-7", InCodePage(kUtf7, u"Café"))), u"Caf+AOk-");
  EXPECT_EQ(Decoded(81, Base64Word("UTF-7", InCodePage(kUtf7, u"会議"))), u"+TxqLcA-");
  EXPECT_EQ(Decoded(33, "=?iso-8859-1?Q?caf=E9_au_lait?="), u"café au lait");
}

// Under another language the bytes are read in the device's code page, or the narrowing
// gives up at the first character that code page lacks.
TEST(HeaderTextTest, CharsetsOutsideTheDeviceLanguageAreNotConverted) {
  std::string korean = InCodePage(kKorean, kHello);
  EXPECT_EQ(Decoded(1, Base64Word("iso-2022-jp", Jis(kMeeting))),
            platform::MultiByteToWide(kLatin1Windows, InCodePage(kShiftJis, kMeeting)));
  EXPECT_EQ(Decoded(81, Base64Word("euc-kr", korean)),
            platform::MultiByteToWide(kShiftJis, korean));
  EXPECT_EQ(Decoded(1, Base64Word("koi8-r", InCodePage(kKoi8r, u"OK " + kRussian))), u"OK ");
  EXPECT_EQ(Decoded(33, Base64Word("koi8-r", InCodePage(kKoi8r, u"Привет"))), u"\x1F@825B");
  EXPECT_EQ(Decoded(1, Base64Word("utf-8", InCodePage(kUtf8, kMeeting))), u"???????");
  EXPECT_EQ(Decoded(82, Base64Word("utf-8", InCodePage(kUtf8, u"한국 😀 끝"))), u"한국 ");
}

TEST(HeaderTextTest, TheWalk) {
  const std::pair<std::string, std::u16string> cases[] = {
      {"=?utf-8?B?w6k=?= =?UTF-8?b?w6k=?= =?utf-8?q?=C3=A9?=", u"é é é"},
      {"=?Utf-8?B?w6k=?=", u"Ã©"},  // an unlisted spelling keeps its bytes
      {"=?utf-8?X?abc?=", u"?X?abc"},
      {"=?utf-8?Q?a?=\r\n =?utf-8?Q?b?= and =?utf-8?Q?c?=!\r\n", u"a b and c!"},
      {"=?iso-8859-1?Q?caf=E9_au_lait?=", u"café_au_lait"},
      {"Hello =?utf-8?B?QUJD and more", u"Hello "},  // no end: the rest is dropped
      {"abc =?", u"abc "},
      {"=??B?QUJD?=x=?"
       "?=y",
       u"ABCxy"},
      // Russian mail shows its first Cyrillic word alone, and "?" for an undefined byte.
      {"Re: =?koi8-r?B?SGVsbG8=?= tail =?utf-8?B?QUJD?=", u"Hello"},
      {"=?windows-1251?Q?a=98b?= tail", u"a?b"},
  };
  for (const auto& [header, expected] : cases) EXPECT_EQ(Decoded(1, header), expected) << header;
  // Korean words share the JIS converter: an escape switches it to two-byte mode, and a last
  // lone byte pairs with the end of the text.
  EXPECT_EQ(Decoded(81, "=?ks_c_5601-1987?B?GyRCMCEw?="),
            platform::MultiByteToWide(kShiftJis, "\x88\x9F\x88\x7E"));
}

TEST(HeaderTextTest, HostileValuesReturn) {
  const size_t kMegabyte = 1 << 20;
  auto length = [](const std::string& header) { return Decoded(1, header).size(); };
  for (std::string piece : {"a", "\n", "\x1B", "=?", "\x1B$B?=", "=?utf-8?B?QUJD?= "}) {
    std::string text;
    while (text.size() < kMegabyte) text += piece;
    EXPECT_LE(length(text), kMegabyte) << piece;
  }
  EXPECT_EQ(length(std::string(kMegabyte, '\n')), 0u);
  EXPECT_EQ(length(Base64Word("utf-8", std::string(kMegabyte, 'z'))), kMegabyte);
}

}  // namespace
}  // namespace mailslice::codec
