#include "codec/charset_tables.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "platform/code_page.h"
#include "support/encoded_words.h"

namespace mailslice::codec {
namespace {

using testing::kKoi8r;
using testing::kWindows1251;
using testing::ScopedLanguage;

struct TableCase {
  const char* name;
  unsigned codePage;
  char16_t (*lookup)(unsigned);
  // Where the table deliberately parts from iconv: byte to the table's value.
  std::map<unsigned, char16_t> deliberateDifferences;
};

class CharsetTableTest : public ::testing::TestWithParam<TableCase> {};

TEST_P(CharsetTableTest, EveryByteMatchesIconvExceptTheListedOnes) {
  const TableCase& table = GetParam();
  for (unsigned byte = 0; byte < 256; ++byte) {
    std::u16string iconv = platform::MultiByteToWide(table.codePage, std::string(1, char(byte)));
    ASSERT_EQ(iconv.size(), 1u) << "byte " << byte;
    auto difference = table.deliberateDifferences.find(byte);
    char16_t expected =
        difference != table.deliberateDifferences.end() ? difference->second : iconv[0];
    EXPECT_EQ(table.lookup(byte), expected) << table.name << " byte 0x" << std::hex << byte;
  }
  EXPECT_EQ(table.lookup(256), kUnmappedByte);
  EXPECT_EQ(table.lookup(0xFFFFFFFFu), kUnmappedByte);
}

INSTANTIATE_TEST_SUITE_P(
    RussianMail, CharsetTableTest,
    ::testing::Values(
        TableCase{"KOI8-R", kKoi8r, Koi8rToUtf16, {}},
        // windows-1251 leaves 0x98 undefined: iconv reads it as an error (U+FFFD), the table
        // as its unmapped mark, which the header decoder shows as "?".
        TableCase{"windows-1251", kWindows1251, Windows1251ToUtf16, {{0x98, kUnmappedByte}}}),
    [](const auto& info) { return info.param.codePage == kKoi8r ? "Koi8r" : "Windows1251"; });

TEST(NarrowForDeviceTest, LowByteLanguageKeepsLowBytesUpToAZeroByte) {
  ScopedLanguage device(kLowByteLanguage);
  EXPECT_EQ(NarrowForDevice(u"Привет"), "\x1F@825B");
  EXPECT_EQ(NarrowForDevice(u"ab\u0100cd"), "ab");
}

TEST(NarrowForDeviceTest, OtherLanguagesNarrowLikeWcstombsInTheDeviceCodePage) {
  {
    ScopedLanguage russian(7);
    EXPECT_EQ(NarrowForDevice(u"Привет!"), "\xCF\xF0\xE8\xE2\xE5\xF2!");
  }
  ScopedLanguage english(1);
  EXPECT_EQ(NarrowForDevice(u"ok Привет"), "ok ");  // stops at the first it cannot hold
}

TEST(NarrowForDeviceTest, StopsBeforeACharacterThatNoLongerFitsWhole) {
  ScopedLanguage utf8Device(1, "UTF-8");
  EXPECT_EQ(NarrowForDevice(u"日本"), "日");  // 6 bytes for 2 units: only one fits in 4
  EXPECT_EQ(NarrowForDevice(u"a日"), "a日");
  EXPECT_EQ(NarrowLikeWcstombs(u"日本", 5), "日");
  EXPECT_EQ(NarrowLikeWcstombs(u"日本", 6), "日本");
  EXPECT_EQ(NarrowLikeWcstombs(u"\U0001F600x", 3), "");  // a surrogate pair is never split
}

}  // namespace
}  // namespace mailslice::codec
