#include "codec/charset_tables.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/code_page.h"
#include "support/encoded_words.h"

namespace mailslice::codec {
namespace {

using testing::ScopedLanguage;

// Every byte against iconv. The one deliberate difference: windows-1251 leaves 0x98 undefined,
// which iconv reads as an error (U+FFFD) and the table as its unmapped mark (shown as "?").
TEST(CharsetTablesTest, EveryByteMatchesIconvExceptTheUndefinedOne) {
  for (unsigned byte = 0; byte < 256; ++byte) {
    std::string bytes(1, static_cast<char>(byte));
    EXPECT_EQ(Koi8rToUtf16(byte), platform::MultiByteToWide(testing::kKoi8r, bytes).at(0)) << byte;
    std::u16string iconv = platform::MultiByteToWide(testing::kWindows1251, bytes);
    EXPECT_EQ(Windows1251ToUtf16(byte), byte == 0x98 ? kUnmappedByte : iconv.at(0)) << byte;
  }
  EXPECT_EQ(platform::MultiByteToWide(testing::kWindows1251, "\x98"), u"\uFFFD");
  EXPECT_EQ(Koi8rToUtf16(256), kUnmappedByte);
  EXPECT_EQ(Windows1251ToUtf16(0xFFFFFFFFu), kUnmappedByte);
}

TEST(NarrowForDeviceTest, LowBytesUnderLanguage33ElseWcstombsInTwiceTheLength) {
  {
    ScopedLanguage lowBytes(kLowByteLanguage);
    EXPECT_EQ(NarrowForDevice(u"Привет"), "\x1F@825B");
    EXPECT_EQ(NarrowForDevice(u"ab\u0100cd"), "ab");  // a zero low byte ends the text
  }
  {
    ScopedLanguage russian(7);
    EXPECT_EQ(NarrowForDevice(u"Привет!"), "\xCF\xF0\xE8\xE2\xE5\xF2!");
  }
  {
    ScopedLanguage english(1);
    EXPECT_EQ(NarrowForDevice(u"ok Привет"), "ok ");  // stops at what the code page lacks
  }
  // A character that no longer fits whole is left out, a surrogate pair never split.
  ScopedLanguage utf8Device(1, "UTF-8");
  EXPECT_EQ(NarrowForDevice(u"日本"), "日");
  EXPECT_EQ(NarrowLikeWcstombs(u"日本", 6), "日本");
  EXPECT_EQ(NarrowLikeWcstombs(u"\U0001F600x", 3), "");
}

}  // namespace
}  // namespace mailslice::codec
