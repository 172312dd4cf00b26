// Conversions of long texts full of characters the code page refuses (the fuzzed codecs took
// seconds on a megabyte of them). The input now reaches iconv a window at a time; these check
// that a window never changes the result, wherever its edge falls: inside a character, an
// escape sequence or a run of refused characters.
#include <gtest/gtest.h>

#include <string>

#include "platform/code_page.h"
#include "support/test_support.h"

namespace mailslice::platform {
namespace {

constexpr unsigned kShiftJis = 932;
constexpr unsigned kIsoJapanese = 50220;
// Wider than any window, so every edge position is tried against every kind of character.
constexpr int kPaddings = 520;
constexpr char16_t kLoneSurrogate = 0xD800;

TEST(CodePageRegressionTest, RefusedCharactersBecomeQuestionMarksAtEveryOffset) {
  for (int padding = 0; padding < kPaddings; padding += 7) {
    std::u16string text = std::u16string(padding, u'\uFFFD') + u"あ\U0001F600b" +
                          std::u16string(padding, u'a') + kLoneSurrogate;
    std::string expected =
        std::string(padding, '?') + "\x82\xa0?b" + std::string(padding, 'a') + "?";
    ASSERT_EQ(WideToMultiByte(kShiftJis, text), expected) << "padding " << padding;
  }
}

TEST(CodePageRegressionTest, CharactersCutByAnyOffsetAreReadWhole) {
  for (int padding = 0; padding < kPaddings; ++padding) {
    std::string ascii(padding, 'a');
    ASSERT_EQ(MultiByteToWide(kUtf8CodePage, ascii + "é\xF0\x9F\x98\x80\xFF" + "z"),
              std::u16string(ascii.begin(), ascii.end()) + u"é\U0001F600\uFFFDz")
        << "padding " << padding;
    ASSERT_EQ(MultiByteToWide(kIsoJapanese, ascii + "\x1b$B$3$s\x1b(Bz"),
              std::u16string(ascii.begin(), ascii.end()) + u"こんz")
        << "padding " << padding;
  }
}

TEST(CodePageRegressionTest, LongUtf7RunsAndEscapedTextSurviveTheWindows) {
  std::u16string japanese;
  for (int i = 0; i < 300; ++i) japanese += u"日本語";
  std::string utf7 = WideToMultiByte(kUtf7CodePage, japanese);
  EXPECT_EQ(MultiByteToWide(kUtf7CodePage, utf7), japanese);
  std::string jis = WideToMultiByte(kIsoJapanese, japanese + u"!");
  EXPECT_EQ(MultiByteToWide(kIsoJapanese, jis), japanese + u"!");
}

TEST(CodePageRegressionTest, NarrowingLikeWcstombsStopsAtTheFirstRefusalFarIn) {
  mailslice::testing::ScopedEnv codePage("MAILSLICE_CODEPAGE", "CP932");
  std::u16string text = std::u16string(1000, u'a') + u"\uFFFD" + u"b";
  EXPECT_EQ(WideToMultiByteUntilFailure(text), std::string(1000, 'a'));
}

}  // namespace
}  // namespace mailslice::platform
