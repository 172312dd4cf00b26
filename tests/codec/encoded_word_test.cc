#include "codec/encoded_word.h"

#include <gtest/gtest.h>

#include <string>

#include "codec/header_text.h"
#include "support/encoded_words.h"

namespace mailslice::codec {
namespace {

using namespace mailslice::testing;

std::u16string Decoded(const std::string& word) { return DecodeEncodedWord(AsHeader(word)).Str(); }

// Unicode words reach the caller whole, whatever the device's code page holds.
TEST(EncodedWordTest, UnicodeWordsBecomeUtf16UnderEveryLanguage) {
  const std::u16string mixed = u"会議 – Привет 😀 café";
  for (int language : {1, 7, 33, 81, 82}) {
    ScopedLanguage device(language);
    EXPECT_EQ(Decoded(Base64Word("utf-8", InCodePage(kUtf8, mixed))), mixed) << language;
    EXPECT_EQ(Decoded(Base64Word("UTF-7", InCodePage(kUtf7, mixed))), mixed) << language;
    EXPECT_EQ(Decoded(Base64Word("utf-8", "\xEF\xBB\xBFok")), u"ok");  // the mark shows nothing
  }
  ScopedLanguage lowBytes(33);
  EXPECT_EQ(Decoded("=?utf-8?Q?caf=C3=A9_cr=C3=A8me?="), u"café crème");
}

// Any other charset reads as the header decoder reads that word.
TEST(EncodedWordTest, OtherCharsetsReadAsTheHeaderDecoderReadsThem) {
  const std::pair<int, std::string> cases[] = {
      {81, Base64Word("ISO-2022-JP", InCodePage(kIso2022Jp, u"添付ファイル.doc"))},
      {82, Base64Word("ks_c_5601-1987", InCodePage(kKorean, u"보고서.hwp"))},
      {7, Base64Word("koi8-r", InCodePage(kKoi8r, u"Отчёт.pdf"))},
      {1, "=?iso-8859-1?Q?r=E9sum=E9.txt?="},
  };
  for (const auto& [language, word] : cases) {
    ScopedLanguage device(language);
    EXPECT_EQ(DecodeEncodedWord(AsHeader(word)), DecodeHeaderText(AsHeader(word))) << word;
  }
}

TEST(EncodedWordTest, MalformedWordsGiveWhatCanBeDecoded) {
  ScopedLanguage japanese(81);
  std::string jis = Base64Word("iso-2022-jp", InCodePage(kIso2022Jp, u"会議"));
  EXPECT_EQ(Decoded(jis.substr(0, jis.size() - 2)), u"会議");  // no "?=": runs to the end
  EXPECT_EQ(Decoded("=?utf-8?B?5pel5p"), u"日\uFFFD");
  for (const char* word : {"", "=?", "=?utf-8", "=?utf-8?B?",
                           "=?utf-8?B?"
                           "?="}) {
    EXPECT_EQ(Decoded(word), u"") << word;
  }
  EXPECT_EQ(Decoded("=??B?QUJD?= tail"), u"ABC tail");
  EXPECT_EQ(Decoded("=?utf-8?B?" + Base64(std::string(1 << 20, 'z'))).size(), 1u << 20);
}

}  // namespace
}  // namespace mailslice::codec
