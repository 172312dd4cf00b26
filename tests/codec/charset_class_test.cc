#include "codec/charset_class.h"

#include <gtest/gtest.h>

#include <string>

namespace mailslice::codec {
namespace {

struct NameCase {
  std::string text;  // what follows "=?"
  int charsetClass;
};

class CharsetClassTest : public ::testing::TestWithParam<NameCase> {};

TEST_P(CharsetClassTest, ClassifiesByTheSpellingsMailUses) {
  EXPECT_EQ(ClassifyCharset(GetParam().text.c_str()), GetParam().charsetClass) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Spellings, CharsetClassTest,
    ::testing::Values(
        NameCase{"iso-2022-jp?B?", kCharsetJapanese}, NameCase{"ISO-2022-JP?B?", kCharsetJapanese},
        NameCase{"Shift_JIS?B?", kCharsetJapanese}, NameCase{"SHIFT_JIS?Q?", kCharsetJapanese},
        NameCase{"shift_jis", kCharsetJapanese}, NameCase{"\x1B$B0!", kCharsetJapanese},
        NameCase{"\x1B$@0!", kCharsetJapanese}, NameCase{"euc-jp?B?", kCharsetEucJp},
        NameCase{"EUC-JP?B?", kCharsetEucJp}, NameCase{"euc-kr?B?", kCharsetEucKr},
        NameCase{"EUC-KR", kCharsetEucKr}, NameCase{"utf-8?B?", kCharsetUtf8},
        NameCase{"UTF-8?q?", kCharsetUtf8}, NameCase{"utf-7?B?", kCharsetUtf7},
        NameCase{"UTF-7", kCharsetUtf7}, NameCase{"ks_c_5601-1987?B?", kCharsetKsc5601},
        NameCase{"KS_C_5601-1987?B?", kCharsetKsc5601}, NameCase{"koi8-r?B?", kCharsetKoi8r},
        NameCase{"KOI8-R?Q?", kCharsetKoi8r}, NameCase{"windows-1251?B?", kCharsetWindows1251},
        NameCase{"WINDOWS-1251", kCharsetWindows1251},
        // A prefix test of the name's own length, with no look at what follows.
        NameCase{"utf-8x?B?", kCharsetUtf8}, NameCase{"utf-80", kCharsetUtf8},
        NameCase{"koi8-ru?B?", kCharsetKoi8r},
        // No case folding beyond the listed spellings.
        NameCase{"Utf-8?B?", kCharsetOther}, NameCase{"KOI8-r?B?", kCharsetOther},
        NameCase{"Windows-1251?B?", kCharsetOther}, NameCase{"Euc-Kr", kCharsetOther},
        NameCase{"iso-8859-1?Q?", kCharsetOther}, NameCase{"\x1B(B", kCharsetOther},
        NameCase{"utf-", kCharsetOther}, NameCase{"", kCharsetOther}));

TEST(CharsetNameLengthTest, JapaneseNamesHaveTheirOwnLengths) {
  EXPECT_EQ(JapaneseCharsetNameLength("shift_jis?B?"), 9u);
  EXPECT_EQ(JapaneseCharsetNameLength("Shift_JIS?B?"), 9u);
  EXPECT_EQ(JapaneseCharsetNameLength("SHIFT_JIS?B?"), 9u);
  EXPECT_EQ(JapaneseCharsetNameLength("ISO-2022-JP?B?"), 11u);
  EXPECT_EQ(JapaneseCharsetNameLength("iso-2022-jp*ja?B?"), 11u);
  EXPECT_EQ(JapaneseCharsetNameLength("\x1B$B0!"), 0u);
  EXPECT_EQ(JapaneseCharsetNameLength("iso-2022"), 0u);
  EXPECT_EQ(ClassifyCharset(nullptr), kCharsetOther);
}

}  // namespace
}  // namespace mailslice::codec
