#include "codec/charset_class.h"

#include <gtest/gtest.h>

#include <utility>

namespace mailslice::codec {
namespace {

TEST(CharsetClassTest, PrefixesOfTheListedSpellingsOnly) {
  // Realistic words of every class are decoded in header_text_test.cc; here the name tests:
  // the name's own length is compared, with no look at what follows and no case folding.
  const std::pair<const char*, int> cases[] = {
      {"\x1B$@0!", kCharsetJapanese}, {"utf-80?B?", kCharsetUtf8}, {"koi8-ru?B?", kCharsetKoi8r},
      {"EUC-KR", kCharsetEucKr},      {"Utf-8?B?", kCharsetOther}, {"KOI8-r?B?", kCharsetOther},
      {"utf-", kCharsetOther},        {"\x1B(B", kCharsetOther},   {"", kCharsetOther},
  };
  for (auto [text, charsetClass] : cases) EXPECT_EQ(ClassifyCharset(text), charsetClass) << text;
  EXPECT_EQ(ClassifyCharset(nullptr), kCharsetOther);
  EXPECT_EQ(JapaneseCharsetNameLength("Shift_JIS?B?"), 9u);
  EXPECT_EQ(JapaneseCharsetNameLength("ISO-2022-JP*ja?B?"), 11u);
  EXPECT_EQ(JapaneseCharsetNameLength("\x1B$B0!"), 0u);
}

}  // namespace
}  // namespace mailslice::codec
