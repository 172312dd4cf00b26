#include "platform/code_page.h"

#include <gtest/gtest.h>

#include "support/test_support.h"

namespace mailslice::platform {
namespace {

using testing::ScopedEnv;

TEST(CodePageTest, DeviceCodePagesConvertBothWays) {
  const std::tuple<const char*, std::string, std::u16string> cases[] = {
      {"CP932", "\x93\xFA\x96\x7B\x8C\xEA abc \xB1", u"日本語 abc ｱ"},
      {"CP949", "\xC7\xD1\xB1\xB9\xBE\xEE", u"한국어"},
      {"CP1251", "\xCF\xF0\xE8\xE2\xE5\xF2", u"Привет"},
      {"CP1252", "caf\xE9 \x80", u"café €"}};
  for (const auto& [name, bytes, text] : cases) {
    ScopedEnv codePage("MAILSLICE_CODEPAGE", name);
    EXPECT_EQ(AnsiToWide(bytes), text) << name;
    EXPECT_EQ(WideToAnsi(text), bytes) << name;
    EXPECT_EQ(WideToMultiByteUntilFailure(text), bytes) << name;
  }
}

TEST(CodePageTest, DefaultCodePageFollowsTheLanguage) {
  ScopedEnv codePage("MAILSLICE_CODEPAGE", std::nullopt);
  ScopedEnv language("MAILSLICE_LANGUAGE", "81");
  EXPECT_EQ(AnsiToWide("\x93\xFA"), u"日");
  ScopedEnv russian("MAILSLICE_LANGUAGE", "7");
  EXPECT_EQ(AnsiToWide("\xCF"), u"П");
}

TEST(CodePageTest, UnreadableBytesBecomeReplacementCharacters) {
  ScopedEnv codePage("MAILSLICE_CODEPAGE", "CP932");
  // 0x82 0x20 is no Shift_JIS pair: one U+FFFD, then the conversion goes on.
  EXPECT_EQ(AnsiToWide("a\x82 b"), u"a\uFFFD b");
  EXPECT_EQ(AnsiToWide("a\x93"), u"a\uFFFD");  // a lead byte cut off at the end
  EXPECT_EQ(MultiByteToWide(kUtf8CodePage, "x\xC3(\xFFy"), u"x\uFFFD(\uFFFDy");
}

TEST(CodePageTest, UnconvertibleCharactersBecomeQuestionMarksOrEndTheNarrowing) {
  ScopedEnv codePage("MAILSLICE_CODEPAGE", "CP1252");
  EXPECT_EQ(WideToAnsi(u"a日b"), "a?b");
  EXPECT_EQ(WideToAnsi(u"a\U0001F600b"), "a?b");  // a surrogate pair is one character
  EXPECT_EQ(WideToAnsi(std::u16string(u"a") + char16_t(0xDC00) + u"b"), "a?b");
  // wcstombs stops at the first character it cannot convert, and at NUL.
  EXPECT_EQ(WideToMultiByteUntilFailure(u"ab日cd"), "ab");
  EXPECT_EQ(WideToMultiByteUntilFailure(std::u16string(u"ab\0cd", 5)), "ab");
}

TEST(CodePageTest, StatefulCodePagesCloseTheirShiftAndUnicodeFormsConvert) {
  EXPECT_EQ(WideToMultiByte(50220, u"日本 ok"), "\x1B$BF|K\\\x1B(B ok");
  EXPECT_EQ(WideToMultiByte(50220, u"ok 日本"), "ok \x1B$BF|K\\\x1B(B");
  EXPECT_EQ(MultiByteToWide(kUtf7CodePage, "Hi +ZeVnLIqe-"), u"Hi 日本語");
  EXPECT_EQ(WideToMultiByte(kUtf8CodePage, u"日本"), "日本");
}

TEST(CodePageTest, UnknownCodePageNameFallsBackToWestern) {
  ScopedEnv codePage("MAILSLICE_CODEPAGE", "NO-SUCH-CHARSET");
  EXPECT_EQ(AnsiToWide("caf\xE9"), u"café");
}

}  // namespace
}  // namespace mailslice::platform
