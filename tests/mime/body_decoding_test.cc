#include "mime/body_decoding.h"

#include <gtest/gtest.h>

#include "platform/code_page.h"
#include "support/test_support.h"

namespace mailslice::mime {
namespace {

using testing::ScopedEnv;

std::string Bytes(unsigned codePage, std::u16string_view text) {
  return platform::WideToMultiByte(codePage, text);
}

TEST(BodyDecodingTest, TransferEncodingsInAnyLetterCase) {
  ScopedEnv language("MAILSLICE_LANGUAGE", "1");
  EXPECT_EQ(DecodeBodyText("SGVsbG8=", u"us-ascii", u"BASE64", u""), u"Hello");
  EXPECT_EQ(DecodeBodyText("caf=C3=A9", u"UTF-8", u"Quoted-Printable", u""), u"café");
  EXPECT_EQ(DecodeBodyText("plain", u"", u"7bit", u""), u"plain");
  EXPECT_EQ(DecodeBodyText(nullptr, u"", u"7bit", u""), u"");
  // An unknown transfer encoding skips the charset step too.
  EXPECT_EQ(DecodeBodyText("\x1B$B$3\x1B(B", u"iso-2022-jp", u"x-uuencode", u""),
            u"\x1B$B$3\x1B(B");
}

TEST(BodyDecodingTest, JapaneseDeviceConvertsJapaneseAndCyrillicCharsets) {
  ScopedEnv language("MAILSLICE_LANGUAGE", "81");
  EXPECT_EQ(ConvertBodyCharset(Bytes(50220, u"日本語のメール"), u"iso-2022-jp"), u"日本語のメール");
  EXPECT_EQ(ConvertBodyCharset(Bytes(51932, u"日本語"), u"euc-jp"), u"日本語");
  EXPECT_EQ(ConvertBodyCharset("日本", u"utf-8"), u"日本");
  // KOI8-R is mapped through its table, then narrowed to the device's Shift_JIS, which holds
  // the Cyrillic letters.
  EXPECT_EQ(ConvertBodyCharset(Bytes(20866, u"Привет"), u"koi8-r"), u"Привет");
  EXPECT_EQ(ConvertBodyCharset("\xCF\xF0", u"windows-1251"), u"Пр");
  // "x-utf-8" is no name this device knows.
  EXPECT_EQ(ConvertBodyCharset("abc", u"x-utf-8"), u"abc");
}

TEST(BodyDecodingTest, OtherDevicesWidenCyrillicAsItStands) {
  ScopedEnv language("MAILSLICE_LANGUAGE", "1");
  EXPECT_EQ(ConvertBodyCharset("\xCF\xF0", u"windows-1251"), u"Ïð");  // windows-1252 reading
  EXPECT_EQ(ConvertBodyCharset("caf\xC3\xA9", u"x-utf-8"), u"café");
  EXPECT_EQ(ConvertBodyCharset(Bytes(50220, u"日本"), u"iso-2022-jp").Find(u'\x1B'), 0);
}

TEST(BodyDecodingTest, CentralEuropeanAndArabicDevicesReadTheirMailCharsets) {
  {
    ScopedEnv language("MAILSLICE_LANGUAGE", "48");
    EXPECT_EQ(ConvertBodyCharset("\xA3\xF3\xBF\xEA\xB1", u"iso-8859-2"), u"Łóżęą");
  }
  {
    ScopedEnv language("MAILSLICE_LANGUAGE", "1");
    EXPECT_NE(ConvertBodyCharset("\xA3\xF3\xBF\xEA\xB1", u"iso-8859-2"), u"Łóżęą");
  }
  ScopedEnv arabic("MAILSLICE_LANGUAGE", "966");
  EXPECT_EQ(ConvertBodyCharset(Bytes(28596, u"مرحبا بكم"), u"iso-8859-6"), u"مرحبا بكم");
}

}  // namespace
}  // namespace mailslice::mime
