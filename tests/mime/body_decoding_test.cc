#include "mime/body_decoding.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>

#include "codec/japanese_converter.h"
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
  EXPECT_EQ(DecodeBodyText(nullptr, u"", u"7bit", u""), u"");
  // An unknown transfer encoding skips the charset step too.
  EXPECT_EQ(DecodeBodyText("\x1B$B$3\x1B(B", u"iso-2022-jp", u"x-uuencode", u""),
            u"\x1B$B$3\x1B(B");
}

// Each device converts the charsets its language reads; the others are widened as they stand.
TEST(BodyDecodingTest, EachDeviceReadsItsOwnCharsets) {
  const std::tuple<const char*, std::string, const char16_t*, std::u16string> cases[] = {
      {"81", Bytes(50220, u"日本語のメール"), u"iso-2022-jp", u"日本語のメール"},
      {"81", Bytes(51932, u"日本語"), u"euc-jp", u"日本語"},
      {"81", "日本", u"utf-8", u"日本"},
      // KOI8-R is mapped through its table, then narrowed to the device's Shift_JIS, which
      // holds the Cyrillic letters.
      {"81", Bytes(20866, u"Привет"), u"koi8-r", u"Привет"},
      {"81", "\xCF\xF0", u"windows-1251", u"Пр"},
      {"81", "abc", u"x-utf-8", u"abc"},          // no name this device knows
      {"1", "\xCF\xF0", u"windows-1251", u"Ïð"},  // the windows-1252 reading
      {"1", "caf\xC3\xA9", u"x-utf-8", u"café"},
      {"1", Bytes(50220, u"日"), u"iso-2022-jp", u"\x1B$BF|\x1B(B"},
      {"48", "\xA3\xF3\xBF\xEA\xB1", u"iso-8859-2", u"Łóżęą"},
      {"1", "\xA3\xF3\xBF\xEA\xB1", u"iso-8859-2", u"£ó¿ê±"},
      {"966", Bytes(28596, u"مرحبا بكم"), u"iso-8859-6", u"مرحبا بكم"}};
  for (const auto& [language, bytes, charset, text] : cases) {
    ScopedEnv device("MAILSLICE_LANGUAGE", language);
    EXPECT_EQ(ConvertBodyCharset(bytes, charset).Str(), text) << language << " " << bytes;
  }
}

// UTF-8 bodies are read as the Japanese converter's Utf8ToDevice hands them over, read back
// through the device code page: byte order mark, NUL, unconvertible and malformed characters.
TEST(BodyDecodingTest, Utf8BodiesReadAsTheConverterNarrowsThem) {
  const std::string texts[] = {
      "\xEF\xBB\xBF"
      "caf\xC3\xA9 \xE2\x82\xAC",
      std::string("ab\0cd", 5),
      "x \xE6\x97\xA5 y \xC3\xA9",
      "bad \xC3( \xFF \xF0\x9F\x98\x80 end",
      "\xEF\xBB\xBF",
      ""};
  for (const char* language : {"1", "7", "48", "82"}) {
    ScopedEnv device("MAILSLICE_LANGUAGE", language);
    for (const std::string& text : texts) {
      char* narrowed = codec::JapaneseConverter().Utf8ToDevice(text.c_str());
      CString expected(platform::AnsiToWide(narrowed));
      std::free(narrowed);
      EXPECT_EQ(ConvertBodyCharset(text, u"utf-8"), expected) << language << " " << text;
    }
  }
}

// A body read where it lies in its part decodes as its NUL-terminated copy does, whatever
// follows it: escapes and groups cut at its end, soft line breaks, stray bytes.
TEST(BodyDecodingTest, ABodyInsideItsPartReadsAsItsCopy) {
  ScopedEnv language("MAILSLICE_LANGUAGE", "1");
  const char* const pieces[] = {"=",   "=\r", "=\r\n", "=A",   "=A\r", "=C3=A9", "=3D",
                                "=\n", "\r",  "\n",    "\r\n", "a",    "Zm9v",   "YQ",
                                "==",  "_",   "\xC3",  "\xA9", "<b>",  "&amp;",  " "};
  const char16_t* const encodings[] = {u"quoted-printable", u"base64", u"8bit", u"x-unknown"};
  const char16_t* const charsets[] = {u"utf-8", u"iso-8859-1", u"iso-2022-jp"};
  std::mt19937 random(99);
  for (int round = 0; round < 3000; ++round) {
    std::string part;
    for (size_t count = random() % 12; count > 0; --count) part += pieces[random() % 21];
    size_t length = part.empty() ? 0 : random() % (part.size() + 1);
    std::string copy = part.substr(0, length);
    const char16_t* encoding = encodings[random() % 4];
    const char16_t* charset = charsets[random() % 3];
    bool html = round % 2 == 0;
    std::string copyPage, inPlacePage;
    std::u16string fromCopy =
        DecodeBodyWide(copy.c_str(), charset, encoding, html ? &copyPage : nullptr);
    std::u16string inPlace = DecodeBodyWide(std::string_view(part).substr(0, length), charset,
                                            encoding, html ? &inPlacePage : nullptr);
    ASSERT_EQ(inPlace, fromCopy) << part << " cut at " << length;
    ASSERT_EQ(inPlacePage, copyPage) << part << " cut at " << length;
  }
}

}  // namespace
}  // namespace mailslice::mime
