#include "codec/encoded_word.h"

#include <gtest/gtest.h>

#include <string>

#include "codec/header_text.h"
#include "support/encoded_words.h"

namespace mailslice::codec {
namespace {

using namespace mailslice::testing;

const std::u16string kMixed = u"会議 – Привет 😀 café";

// Unicode words reach the caller whole, whatever the device's code page holds.
TEST(EncodedWordTest, UnicodeWordsBecomeUtf16UnderEveryLanguage) {
  for (int language : {1, 7, 33, 81, 82}) {
    ScopedLanguage device(language);
    EXPECT_EQ(DecodeEncodedWord(AsHeader(Base64Word("utf-8", InCodePage(kUtf8, kMixed)))).Str(),
              kMixed)
        << language;
    EXPECT_EQ(DecodeEncodedWord(AsHeader(Base64Word("UTF-7", InCodePage(kUtf7, kMixed)))).Str(),
              kMixed)
        << language;
  }
}

TEST(EncodedWordTest, UnicodeWordDetails) {
  ScopedLanguage english(1);
  // A byte order mark in front of the text shows nothing.
  EXPECT_EQ(DecodeEncodedWord(AsHeader(Base64Word("utf-8", "\xEF\xBB\xBFok"))), u"ok");
  EXPECT_EQ(DecodeEncodedWord(AsHeader("=?utf-8?Q?caf=C3=A9_cr=C3=A8me?=")), u"café_crème");
  // A word with no end is decoded as far as it goes.
  EXPECT_EQ(DecodeEncodedWord(AsHeader("=?utf-8?B?5pel5pys")), u"日本");
  EXPECT_EQ(DecodeEncodedWord(AsHeader("=?utf-8?B?5pel5p")), u"日\uFFFD");
  ScopedLanguage lowBytes(33);
  EXPECT_EQ(DecodeEncodedWord(AsHeader("=?utf-8?Q?caf=C3=A9_cr=C3=A8me?=")), u"café crème");
}

// Any other charset reads as the header decoder reads that word.
TEST(EncodedWordTest, OtherCharsetsReadAsTheHeaderDecoderReadsThem) {
  struct Case {
    int language;
    std::string word;
  };
  const Case cases[] = {
      {81, Base64Word("ISO-2022-JP", InCodePage(kIso2022Jp, u"添付ファイル.doc"))},
      {81, Base64Word("shift_jis", InCodePage(kShiftJis, u"見積書.xls"))},
      {82, Base64Word("ks_c_5601-1987", InCodePage(kKorean, u"보고서.hwp"))},
      {7, Base64Word("koi8-r", InCodePage(kKoi8r, u"Отчёт.pdf"))},
      {1, Base64Word("koi8-r", InCodePage(kKoi8r, u"Отчёт.pdf"))},
      {1, "=?iso-8859-1?Q?r=E9sum=E9.txt?="},
      {1, "=?Utf-8?B?w6k=?="},
  };
  for (const Case& test : cases) {
    ScopedLanguage device(test.language);
    CString word = AsHeader(test.word);
    EXPECT_EQ(DecodeEncodedWord(word), DecodeHeaderText(word)) << test.word;
  }
  ScopedLanguage japanese(81);
  EXPECT_EQ(DecodeEncodedWord(AsHeader(cases[0].word)), u"添付ファイル.doc");
}

TEST(EncodedWordTest, MalformedWordsGiveWhatCanBeDecoded) {
  ScopedLanguage japanese(81);
  std::string jis = Base64Word("iso-2022-jp", InCodePage(kIso2022Jp, u"会議"));
  std::string unterminated = jis.substr(0, jis.size() - 2);
  EXPECT_EQ(DecodeEncodedWord(AsHeader(unterminated)), u"会議");
  EXPECT_EQ(DecodeHeaderText(AsHeader(unterminated)), u"");
  EXPECT_EQ(DecodeEncodedWord(AsHeader("")), u"");
  EXPECT_EQ(DecodeEncodedWord(AsHeader("=?")), u"");
  EXPECT_EQ(DecodeEncodedWord(AsHeader("=?utf-8")), u"");
  EXPECT_EQ(DecodeEncodedWord(AsHeader("=?utf-8?B?")), u"");
  EXPECT_EQ(DecodeEncodedWord(AsHeader("=??B?QUJD?=")), u"ABC");
  EXPECT_EQ(DecodeEncodedWord(AsHeader("=?utf-8?B?QUJD?= tail")), u"ABC tail");
  std::string huge = "=?utf-8?B?" + Base64(std::string(1 << 20, 'z'));
  EXPECT_EQ(DecodeEncodedWord(AsHeader(huge)).GetLength(), 1 << 20);
}

}  // namespace
}  // namespace mailslice::codec
